// Shows one value of any size: as text, indented, as bytes with offsets, as a picture.
#pragma once

#include "vnquery/result/ColumnKind.h"
#include "vnquery/result/TableWriter.h"
#include "vnquery/window/ValueFind.h"

#include <QTimer>
#include <QWidget>

#include <memory>
#include <string>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QToolButton;

namespace vnquery {

class PictureView;

/// What the pane shows.
struct PaneValue {
    Value value;
    std::string what; ///< its column's heading
    std::string cell; ///< for messages, such as "row 1, column 2"
    ColumnKind kind = ColumnKind::Unknown;
    bool isEditable = false;
    bool isNullable = false;
    bool isDefault = false; ///< its new value is the column's default
};

/// It shows a page at a time and reads no more than that, except to indent (IndentedText.h) and
/// for a picture. Showing selects nothing and changes nothing. A text is edited where it fits on a
/// page and an edit field gives back each of its characters; what was typed is a draft until it is
/// accepted (the button, Ctrl+Enter) and forgotten when another value is shown: ask HasDraft
/// before.
class ValuePane : public QWidget {
    Q_OBJECT

public:
    explicit ValuePane(QWidget* parent = nullptr);
    ~ValuePane() override;

    void ShowValue(const PaneValue& shown);
    /// Shows that there is no value.
    void Clear();

    /// Whether something was typed that is not accepted yet.
    bool HasDraft() const;
    /// Emits Edited with the draft, if there is one. False, after a message, when the column does
    /// not take it: it is still a draft then.
    bool AcceptDraft();
    /// Forgets the draft.
    void UndoDraft();

Q_SIGNALS:
    /// The user has set another value: typed and accepted it, loaded it, or chose NULL or the
    /// default. The pane shows it already.
    void Edited(const vnquery::NewValue& value);

protected:
    void changeEvent(QEvent* event) override;

private:
    enum class View { Text, Json, Xml, Bytes, Picture };

    void Build();
    void Relabel();
    void FillViews();
    void ShowView(View view);
    void ShowPicture();
    void ShowPage(DWORD begin);
    void ShowInfo();
    void UpdateButtons();
    int PositionOf(DWORD byte) const;
    void MarkHits();
    void GoTo();
    void Find(bool forward);
    void StepFind();
    void StopFind(const QString& outcome = {});
    void Load();
    void Set(const NewValue& value);
    bool IsTextView() const { return m_view <= View::Xml; }
    std::string DraftText() const;

    PaneValue m_shown;
    bool m_hasValue = false;
    View m_view = View::Text;
    std::optional<View> m_chosen; ///< by the user
    Value m_paged;                ///< what the pages are of: the value, or the indented text
    std::string m_original;       ///< the text that can be edited
    QString m_fault;              ///< why the view has nothing to show
    DWORD m_begin = 0;            ///< of the page
    DWORD m_end = 0;
    bool m_canType = false;
    std::unique_ptr<ValueFind> m_find;
    std::optional<ValueFind::Hit> m_hit;
    QTimer m_findTimer;

    QComboBox* m_views;
    QLabel* m_info;
    QStackedWidget* m_stack;
    QPlainTextEdit* m_text;
    PictureView* m_picture;
    QWidget* m_pageBar;
    QToolButton* m_pageButtons[4];
    QLabel* m_page;
    QLineEdit* m_offset;
    QWidget* m_findBar;
    QLineEdit* m_needle;
    QToolButton* m_findButtons[3];
    QLabel* m_found;
    QPushButton* m_buttons[6];
};

} // namespace vnquery
