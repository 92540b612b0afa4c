#include "vnquery/window/ValueLink.h"

#include "vnquery/window/ConnectionPage.h"
#include "vnquery/window/ResultView.h"
#include "vnquery/window/ValuePane.h"

#include "vnquery/result/CellText.h"

namespace vnquery {

ValueLink::ValueLink(ValuePane& pane, QObject* parent) : QObject(parent), m_pane(pane) {
    connect(&pane, &ValuePane::Edited, this, [this](const NewValue& value) {
        if (m_page)
            m_page->GetResult().SetValue(m_place, value);
    });
}

bool ValueLink::Leave() { return !m_pane.HasDraft() || m_pane.AcceptDraft(); }

void ValueLink::Show(ConnectionPage* page) {
    CellPlace place;
    const bool hasValue = page && page->GetResult().GetCurrentPlace(place);
    if (m_isTaking)
        return;
    if (m_pane.HasDraft()) {
        m_isTaking = true;
        const bool isThere = hasValue && page == m_page && place == m_place;
        const bool isTaken = !isThere && m_pane.AcceptDraft();
        m_isTaking = false;
        if (!isTaken)
            return;
    }
    m_page = page;
    m_place = place;
    if (!hasValue) {
        m_pane.Clear();
        return;
    }
    const ResultDocument& document = page->GetResult().GetDocument();
    const NewValue* const edit = document.GetEdits().Find(place);
    const bool isEditable = page->GetResult().IsCurrentEditable();
    m_pane.ShowValue({document.GetValue(place), document.GetHeading(place.second),
                      CellName(place.first, place.second), document.GetKind(place.second),
                      isEditable, isEditable && document.GetPlan().columns[place.second].isNullable,
                      edit && edit->isDefault});
}

} // namespace vnquery
