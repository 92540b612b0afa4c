// The pane of one value, by keys and clicks.
#include "examples/vnquery/window/ValuePane.h"

#include "examples/vnquery/window/Label.h"
#include "tests/vnquery/result/MakeValue.h"

#include <QApplication>
#include <QBuffer>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <fstream>

namespace vnquery::test {
namespace {

long PeakMegabytes() {
#ifdef __SANITIZE_ADDRESS__ // which keeps what is freed
    return 0;
#else
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stol(line.substr(6)) / 1024;
    return 0;
#endif
}

class ValuePanes : public testing::Test {
protected:
    ValuePanes() {
        QObject::connect(&m_pane, &ValuePane::Edited,
                         [this](const NewValue& value) { m_edits.push_back(value); });
        m_pane.resize(400, 600);
        m_pane.show();
        m_pane.activateWindow();
        TextEdit().setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_pane));
    }
    void Show(Value::Type type, std::string_view bytes, ColumnKind kind = ColumnKind::Text) {
        m_shown.value = type == Value::Type::Null ? Value() : MakeValue(type, bytes);
        m_shown.what = "notes";
        m_shown.kind = kind;
        m_shown.isEditable = m_shown.isNullable = true;
        m_pane.ShowValue(m_shown);
    }
    QPlainTextEdit& TextEdit() { return *m_pane.findChild<QPlainTextEdit*>(); }
    QString Shown() { return TextEdit().toPlainText(); }
    std::string View() { return m_pane.findChild<QComboBox*>()->currentText().toStdString(); }
    QAbstractButton* Button(const QString& name) {
        for (QAbstractButton* button : m_pane.findChildren<QAbstractButton*>())
            if (button->accessibleName() == name || button->text() == name)
                return button;
        return nullptr;
    }
    void Press(UINT id) {
        QAbstractButton* const plain = Button(PlainLabel(id));
        QAbstractButton* const button = plain ? plain : Button(Label(id).section('\t', 0, 0));
        ASSERT_TRUE(button && button->isEnabled()) << id;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    void Choose(const char* view) {
        auto* const views = m_pane.findChild<QComboBox*>();
        views->setFocus();
        QTest::keyClicks(views, view);
        QTest::keyClick(views, Qt::Key_Return);
        Q_EMIT views->activated(views->currentIndex());
    }
    void Find(const char* needle, UINT button) {
        for (QLineEdit* field : m_pane.findChildren<QLineEdit*>())
            if (field->accessibleName() == PlainLabel(IDS_VQ_P_FIND))
                field->setText(QString::fromUtf8(needle));
        Press(button);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !Button(PlainLabel(IDS_VQ_CANCEL))->isVisible(); },
                                    60000));
    }

    PaneValue m_shown;
    ValuePane m_pane;
    std::vector<NewValue> m_edits;
};

TEST_F(ValuePanes, LookingChangesNothingAndTypingIsADraft) {
    const std::string text = "one\r\ntwo\xC2\xA0three";
    Show(Value::Type::Text, text);
    EXPECT_FALSE(TextEdit().textCursor().hasSelection());
    EXPECT_FALSE(m_pane.HasDraft());
    EXPECT_TRUE(m_pane.AcceptDraft());
    QTest::keyClick(&TextEdit(), Qt::Key_Return, Qt::ControlModifier); // nothing to accept
    EXPECT_TRUE(m_edits.empty());

    QTest::keyClicks(&TextEdit(), "x");
    QTest::keyClick(&TextEdit(), Qt::Key_Return); // a line break, not more
    EXPECT_TRUE(m_pane.HasDraft());
    Press(IDS_VQ_P_UNDO);
    EXPECT_FALSE(m_pane.HasDraft());
    EXPECT_TRUE(m_edits.empty());

    QTest::keyClicks(&TextEdit(), "x");
    QTest::keyClick(&TextEdit(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(m_edits.size(), 1u);
    EXPECT_EQ(m_edits[0].value.GetBytes(), "x" + text); // breaks and no-break spaces are kept
    EXPECT_FALSE(m_pane.HasDraft());
    Press(IDS_VQ_M_SET_NULL);
    EXPECT_TRUE(m_edits.at(1).value.IsNull());
    EXPECT_EQ(TextEdit().placeholderText(), "NULL");
    QTest::keyClicks(&TextEdit(), "a");
    QTest::keyClick(&TextEdit(), Qt::Key_Backspace); // an empty text is not NULL
    QTest::keyClick(&TextEdit(), Qt::Key_Return, Qt::ControlModifier);
    ASSERT_EQ(m_edits.size(), 3u);
    EXPECT_EQ(m_edits[2].value.GetType(), Value::Type::Text);
    EXPECT_EQ(TextEdit().placeholderText(), "");
    Press(IDS_VQ_M_SET_DEFAULT);
    EXPECT_TRUE(m_edits.at(3).isDefault);
    EXPECT_EQ(TextEdit().placeholderText(), Label(IDS_VQ_V_DEFAULT_INFO));
}

TEST_F(ValuePanes, AColumnOfNumbersTakesNumbers) {
    Show(Value::Type::Number, "42", ColumnKind::Integer);
    QTest::keyClicks(&TextEdit(), "x");
    QTimer::singleShot(0, [] {
        if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->accept();
    });
    EXPECT_FALSE(m_pane.AcceptDraft());
    EXPECT_TRUE(m_pane.HasDraft());
    EXPECT_TRUE(m_edits.empty());
    QTest::keyClick(&TextEdit(), Qt::Key_Backspace);
    QTest::keyClicks(&TextEdit(), "-");
    EXPECT_TRUE(m_pane.AcceptDraft());
    EXPECT_EQ(m_edits.at(0).value.GetBytes(), "-42");
}

/// What an edit field would not give back is shown only.
TEST_F(ValuePanes, TextsThatTypingWouldSpoilAreReadOnly) {
    for (const std::string& text :
         {std::string("a\nb\r\nc"), std::string("a\rb"), std::string("a\xFF"),
          std::string("\xE2\x80\xA9"), std::string("\xEF\xB7\x90"), std::string(70000, 'x')}) {
        Show(Value::Type::Text, text);
        EXPECT_TRUE(TextEdit().isReadOnly()) << text.substr(0, 10);
        QTest::keyClicks(&TextEdit(), "x");
        EXPECT_FALSE(m_pane.HasDraft());
    }
    for (const char* text : {"\xEF\xBB\xBF"
                             "a",
                             "a\tb",
                             "a\xE2\x80\xA8"
                             "b",
                             "\xF0\x9F\x98\x80"}) {
        Show(Value::Type::Text, text);
        EXPECT_FALSE(TextEdit().isReadOnly()) << text;
    }
    Show(Value::Type::Binary, "abc", ColumnKind::Binary);
    EXPECT_TRUE(TextEdit().isReadOnly());
}

TEST_F(ValuePanes, PagesAndHitsOfALongValueTakeLittleMemory) {
    Value value;
    value.Begin(Value::Type::Text);
    std::string piece;
    while (piece.size() < 65000) // characters lie across the borders of pages
        piece += "\xE2\x82\xAC";
    for (int i = 0; i < 1650; ++i)
        value.Append({reinterpret_cast<const BYTE*>(piece.data()), piece.size()});
    const DWORD length = value.GetLength();
    const std::string needle = "N\xC3\xA4"
                               "del";
    value.Append({reinterpret_cast<const BYTE*>(needle.data()), needle.size()});
    value.Append({reinterpret_cast<const BYTE*>(piece.data()), piece.size()});
    value.Complete();
    ASSERT_GT(length, 100u << 20);
    const long before = PeakMegabytes();
    m_shown.value = value;
    m_shown.isEditable = true;
    m_pane.ShowValue(m_shown);
    EXPECT_TRUE(TextEdit().isReadOnly());
    QString all;
    for (int i = 0; i < 4; ++i) {
        all += Shown();
        Press(IDS_VQ_V_NEXT);
    }
    EXPECT_EQ(all.count(QChar(0x20AC)), all.size()); // no character was torn
    Press(IDS_VQ_P_FIRST);
    Find("N\xC3\x84"
         "DEL",
         IDS_VQ_P_FIND_NEXT);
    EXPECT_EQ(TextEdit().textCursor().selectedText().toStdString(), needle);
    Press(IDS_VQ_P_LAST);
    Press(IDS_VQ_P_FIRST);
    Find("not there", IDS_VQ_P_FIND_PREVIOUS);
    EXPECT_LT(PeakMegabytes() - before, 24);
}

TEST_F(ValuePanes, AHitAcrossTheBorderOfTwoPagesIsShownWhole) {
    std::string text(200000, '.');
    text.replace(65536 - 3, 6, "middle");
    text.replace(20, 6, "middle");
    Show(Value::Type::Text, text);
    for (const auto& [button, expected] :
         {std::pair(IDS_VQ_P_FIND_NEXT, 20), std::pair(IDS_VQ_P_FIND_NEXT, 65533),
          std::pair(IDS_VQ_P_FIND_NEXT, 20), std::pair(IDS_VQ_P_FIND_PREVIOUS, 65533),
          std::pair(IDS_VQ_P_FIND_PREVIOUS, 20)}) {
        Find("MIDDLE", static_cast<UINT>(button));
        EXPECT_EQ(TextEdit().textCursor().selectedText(), "middle");
        EXPECT_EQ(TextEdit().extraSelections().size(),
                  expected == 20 ? 1 : Shown().count("middle"));
    }
    Choose("Bytes");
    EXPECT_TRUE(Shown().startsWith("000000  2E 2E"));
    Press(IDS_VQ_P_LAST);
    EXPECT_TRUE(Shown().startsWith("030000  2E"));
    EXPECT_EQ(Shown().split('\n').last().left(6), "030D30");
}

TEST_F(ValuePanes, TheViewIsThatOfTheContentUnlessTheUserChooses) {
    Show(Value::Type::Text, "{\"a\":1}");
    EXPECT_EQ(View(), "JSON");
    EXPECT_EQ(Shown(), "{\n  \"a\": 1\n}");
    EXPECT_TRUE(TextEdit().isReadOnly());
    Show(Value::Type::Text, "{a");
    EXPECT_EQ(View(), "Text"); // it only began so
    Show(Value::Type::Text, "<a><b/></a>");
    EXPECT_EQ(View(), "XML");
    Show(Value::Type::Binary, std::string(40, '\0'));
    EXPECT_EQ(View(), "Bytes");
    Show(Value::Type::Text, "{\"a\":1}");
    Choose("Text");
    EXPECT_FALSE(TextEdit().isReadOnly());
    Show(Value::Type::Text, "[2]");
    EXPECT_EQ(View(), "Text"); // as chosen
    m_pane.Clear();
    EXPECT_FALSE(m_pane.HasDraft());
    EXPECT_FALSE(Button(Label(IDS_VQ_V_LOAD))->isEnabled());
}

TEST_F(ValuePanes, PicturesAreShownAndThoseOfAnEnemyRefused) {
    const auto info = [&] { return m_pane.findChild<QLabel*>()->text(); };
    for (const char* format : {"PNG", "BMP", "JPEG", "WebP", "TIFF"}) {
        QImage image(40, 30, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        ASSERT_TRUE(image.save(&buffer, format)) << format;
        Show(Value::Type::Binary, bytes.toStdString());
        EXPECT_TRUE(info().contains("40 x 30")) << format << info().toStdString();
        Show(Value::Type::Binary, bytes.left(bytes.size() / 3).toStdString()); // cut: no crash
    }
    Show(Value::Type::Text, "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='10'/>");
    EXPECT_TRUE(info().contains("20 x 10")) << info().toStdString();
    // 100,000 x 100,000 pixels in a file of a few bytes.
    const std::string header("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\1\x86\xA0\0\1\x86\xA0\x01\0\0\0\0",
                             29);
    Show(Value::Type::Binary, header + std::string(400, '\0'));
    Show(Value::Type::Text,
         "<svg xmlns='http://www.w3.org/2000/svg' width='90000' height='90000'/>");
    EXPECT_LT(PeakMegabytes(), 600);
    Show(Value::Type::Binary,
         std::string("BM\x36\x10\x0E\0\0\0\0\0\x36\0\0\0\x28\0\0\0\0\0\1\0\0\0\1\0\1\0\x18\0", 30) +
             std::string(400, 'x'));
    EXPECT_NE(View(), "Picture");
}

} // namespace
} // namespace vnquery::test
