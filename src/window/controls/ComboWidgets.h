// The Qt widgets of combo boxes.
#pragma once

#include <QComboBox>

class QListWidget;

namespace vnbytstr::detail {

class ComboControl;

/// A field with a list that drops down.
class ComboWidget final : public QComboBox {
public:
    ComboWidget(ComboControl& control, QWidget* parent);
    void Forget() { m_control = nullptr; }

    /// Makes it editable, with that line for its field.
    void TakeLine(QLineEdit* line);
    bool IsOpen() const { return m_open; }
    // As Qt's, which would put the first item, or a removed one's neighbour, into the field.
    void InsertKeepingField(int index, const QString& text);
    void RemoveKeepingField(int index, int current);

    void showPopup() override;
    void hidePopup() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    ComboControl* m_control;
    bool m_open = false;
};

/// A field with the list below it.
class SimpleComboWidget final : public QWidget {
public:
    SimpleComboWidget(ComboControl& control, QLineEdit* line, QWidget* parent);
    void Forget() { m_control = nullptr; }

    void Insert(int index, const QString& text);
    void Remove(int index);
    void Clear();
    void Select(int index);

private:
    ComboControl* m_control;
    QListWidget* m_list;
};

} // namespace vnbytstr::detail
