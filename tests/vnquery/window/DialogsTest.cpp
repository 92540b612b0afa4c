// The dialogs: connections, export, global variables, parameters.
#include "examples/vnquery/window/ConnectForm.h"
#include "examples/vnquery/window/ExportForm.h"
#include "examples/vnquery/window/Label.h"
#include "examples/vnquery/window/ParametersDialog.h"
#include "examples/vnquery/window/RunTask.h"
#include "examples/vnquery/window/VariablesDialog.h"

#include "examples/vnquery/sources/SavedConnections.h"
#include "examples/vnquery/tasks/Failure.h"
#include "examples/vnquery/tasks/Interruption.h"
#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace vnquery::test {
namespace {

/// Each test has a profile of its own.
class Dialogs : public testing::Test {
protected:
    Dialogs() {
        qputenv("VNBYTSTR_PROFILE", m_folder.filePath("profile.ini").toUtf8());
        QTest::qWait(20); // more than a tick
    }
    ~Dialogs() override { qunsetenv("VNBYTSTR_PROFILE"); }
    std::string File(const char* name) { return m_folder.filePath(name).toStdString(); }
    std::string Profile() {
        std::ifstream file(File("profile.ini"));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Does that to the dialog that `action` opens.
    template <class Dialog>
    void WithDialog(const std::function<void()>& action, const std::function<void(Dialog&)>& use) {
        bool isUsed = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, [&] {
            auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
            if (!dialog || isUsed)
                return;
            isUsed = true;
            use(*dialog);
        });
        timer.start(1);
        action();
        EXPECT_TRUE(isUsed);
    }
    /// The field of a form with that label.
    template <class Widget>
    static Widget& Field(QDialog& dialog, UINT label) {
        for (QLabel* text : dialog.findChildren<QLabel*>())
            if (text->text() == Label(label))
                if (auto* const field = qobject_cast<Widget*>(text->buddy()))
                    return *field;
        throw std::runtime_error("no field " + Text(label));
    }
    static QAbstractButton& Button(QDialog& dialog, UINT label) {
        for (QAbstractButton* button : dialog.findChildren<QAbstractButton*>())
            if (button->text() == Label(label))
                return *button;
        throw std::runtime_error("no button " + Text(label));
    }
    static void Press(QDialog& dialog, UINT label) {
        QTest::mouseClick(&Button(dialog, label), Qt::LeftButton);
    }

    QTemporaryDir m_folder;
};

TEST_F(Dialogs, AConnectionIsBuiltAndShownAgain) {
    ConnectForm form;
    form.show();
    EXPECT_EQ(form.GetConnection(), Connection());
    const Connection connections[] = {
        {"/tmp/a;b={c}.sqlite", {}},
        {{},
         "Driver={PostgreSQL Unicode};Server=db 1;Port=5433;Database={a;b};UID=me;"
         "PWD={p}};{ =w};SSLmode=require;"},
        {{}, "Driver={Not Installed};Server=x;"},
        {{}, "anything"}};
    for (const Connection& connection : connections) {
        form.SetConnection(connection);
        const std::string made = form.GetConnection().dataSource;
        EXPECT_TRUE(connection.dataSource == made || connection.dataSource + ";" == made) << made;
        EXPECT_EQ(connection.file, form.GetConnection().file);
        for (const QLineEdit* field : form.findChildren<QLineEdit*>()) // nowhere to be seen
            EXPECT_TRUE(field->echoMode() != QLineEdit::Normal || !field->text().contains("{ =w"))
                << field->text().toStdString();
    }
    // A password that is typed into the string moves to its field.
    form.SetConnection({{}, "DSN=none such;"});
    auto& text = Field<QLineEdit>(form, IDS_VQ_D_STRING);
    form.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    text.setFocus();
    text.setCursorPosition(100);
    QTest::keyClicks(&text, "PWD={a}};}}b}");
    QTest::keyClick(&text, Qt::Key_Tab);
    EXPECT_EQ(text.text(), "DSN=none such;");
    EXPECT_EQ(Field<QLineEdit>(form, IDS_VQ_P_PASSWORD).text(), "a};}b");
    EXPECT_EQ(form.GetConnection().dataSource, "DSN=none such;PWD={a}};}}b};");
}

/// Qt draws them at the wrong end of a text that runs from right to left.
TEST_F(Dialogs, ButtonsHaveNoIcons) {
    QMessageBox box(QMessageBox::Question, {}, "?", QMessageBox::Yes | QMessageBox::Cancel);
    for (const QAbstractButton* button : box.buttons())
        EXPECT_TRUE(button->icon().isNull());
}

/// The tab of a saved connection has its name, unless something else was typed after it was chosen.
TEST_F(Dialogs, ASavedConnectionHasItsName) {
    const Connection films{{}, "Driver={X};Server=db1;Database=films;"};
    ASSERT_TRUE(SaveConnection("Films", films));
    EXPECT_EQ(OpenSavedConnection(nullptr, "Films")->name, "Films");
    ConnectForm form;
    form.findChild<QComboBox*>()->setCurrentIndex(0);
    form.SetConnection(films);
    EXPECT_EQ(form.GetConnection().name, "Films");
    form.SetConnection({{}, "Driver={X};Server=db2;Database=films;"});
    EXPECT_EQ(form.GetConnection().name, "");
}

TEST_F(Dialogs, SavedConnectionsHaveNoPasswordAndAskForIt) {
    {
        ConnectForm form;
        form.show();
        form.SetConnection({{}, "Driver={Some};Server=x;UID=me;Pwd=S3CR3T"});
        QTest::keyClicks(&Field<QComboBox>(form, IDS_VQ_P_SAVED), "films;=[1]");
        Press(form, IDS_VQ_P_SAVE_AS);
        EXPECT_EQ(form.GetConnection().name, "films;=[1]");
        form.SetConnection({File("a.db"), {}});
        Field<QComboBox>(form, IDS_VQ_P_SAVED).setEditText("file");
        Press(form, IDS_VQ_P_SAVE_AS);
    }
    EXPECT_EQ(ListSavedConnections(), (std::vector<std::string>{"films;=[1]", "file"}));
    EXPECT_EQ(Profile().find("S3CR3T"), std::string::npos) << Profile();
    EXPECT_EQ(OpenSavedConnection(nullptr, "file"), (Connection{File("a.db"), {}, "file"}));
    EXPECT_FALSE(OpenSavedConnection(nullptr, "none"));
    std::optional<Connection> opened;
    WithDialog<QInputDialog>([&] { opened = OpenSavedConnection(nullptr, "films;=[1]"); },
                             [](QInputDialog& dialog) {
                                 EXPECT_EQ(dialog.textEchoMode(), QLineEdit::Password);
                                 dialog.setTextValue("a;b");
                                 dialog.accept();
                             });
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened->dataSource, "Driver={Some};Server=x;UID=me;PWD={a;b};");
    ConnectForm form;
    form.show();
    auto& saved = Field<QComboBox>(form, IDS_VQ_P_SAVED);
    saved.setCurrentIndex(saved.findText("file"));
    Q_EMIT saved.activated(saved.currentIndex());
    EXPECT_EQ(form.GetConnection().file, File("a.db"));
    Press(form, IDS_VQ_G_DELETE);
    EXPECT_EQ(ListSavedConnections().size(), 1u);
}

TEST_F(Dialogs, TestingAConnectionTellsTheServerOrWhyNot) {
    std::ofstream(File("none.db")) << std::string(5000, 'x');
    std::ofstream(File("empty.db"));
    ConnectForm form;
    form.show();
    form.SetConnection({File("none.db"), {}});
    QString text;
    WithDialog<QMessageBox>([&] { Press(form, IDS_VQ_P_TEST); },
                            [&](QMessageBox& box) {
                                text = box.text();
                                box.accept();
                            });
    EXPECT_TRUE(text.contains("no SQLite database")) << text.toStdString();
    form.SetConnection({File("empty.db"), {}});
    Press(form, IDS_VQ_P_TEST);
    bool isTold = false;
    for (const QLabel* label : form.findChildren<QLabel*>())
        isTold = isTold || label->text().contains("SQLite 3.");
    EXPECT_TRUE(isTold);
}

TEST_F(Dialogs, ExportsAreRememberedByTheirFormat) {
    const auto choose = [](ExportForm& form, Format format) {
        Field<QComboBox>(form, IDS_VQ_P_FORMAT).setCurrentIndex(static_cast<int>(format));
    };
    {
        ExportForm form("films");
        form.show();
        choose(form, Format::Csv);
        Field<QComboBox>(form, IDS_VQ_X_SEPARATOR).setEditText(";");
        Field<QLineEdit>(form, IDS_VQ_X_NULL).setText("a=;{b}");
        Field<QComboBox>(form, IDS_VQ_X_BREAK).setCurrentIndex(1);
        Field<QLineEdit>(form, IDS_VQ_X_FILE).setText(QString::fromStdString(File("new.csv")));
        Field<QComboBox>(form, IDS_VQ_P_ROWS).setCurrentIndex(1);
        form.accept();
        EXPECT_EQ(form.result(), QDialog::Accepted);
        const ExportRequest& request = form.GetRequest();
        EXPECT_EQ(request.file, File("new.csv"));
        EXPECT_EQ(request.rows, ExportRows::All);
        EXPECT_EQ(request.format.format, Format::Csv);
        EXPECT_EQ(request.format.separator, ";");
        EXPECT_EQ(request.format.nullText, "a=;{b}");
        EXPECT_EQ(request.format.lineBreak, LineBreak::CrLf);
        EXPECT_TRUE(request.format.headings.value());
        EXPECT_EQ(request.format.recordLength, 0);
    }
    ExportForm form("films");
    form.show();
    EXPECT_EQ(Field<QComboBox>(form, IDS_VQ_X_SEPARATOR).currentText(), ";");
    EXPECT_EQ(Field<QLineEdit>(form, IDS_VQ_X_NULL).text(), "a=;{b}");
    EXPECT_FALSE(Field<QLineEdit>(form, IDS_VQ_X_LENGTH).isEnabled());
    choose(form, Format::Text);
    EXPECT_EQ(Field<QComboBox>(form, IDS_VQ_X_SEPARATOR).currentText(), "Tab");
    EXPECT_EQ(Field<QLineEdit>(form, IDS_VQ_X_NULL).text(), "\\N");
    EXPECT_TRUE(Field<QLineEdit>(form, IDS_VQ_X_LENGTH).isEnabled());
    // A file that is there is replaced only after a Yes, which is not the default.
    std::ofstream(File("old.txt")) << "old";
    Field<QLineEdit>(form, IDS_VQ_X_FILE).setText(QString::fromStdString(File("old.txt")));
    WithDialog<QMessageBox>([&] { form.accept(); },
                            [](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Return); });
    EXPECT_NE(form.result(), QDialog::Accepted);
    const std::tuple<Format, UINT, const char*> wrong[] = {
        {Format::Text, IDS_VQ_X_CCSID, "x"},
        {Format::Text, IDS_VQ_X_CCSID, "9 - none"},
        {Format::Text, IDS_VQ_X_CCSID, "70000"},
        {Format::Records, IDS_VQ_X_LENGTH, "-1"},
        {Format::Records, IDS_VQ_X_LENGTH, "16777217"},
        {Format::Csv, IDS_VQ_X_SEPARATOR, "\""}};
    for (const auto& [format, label, text] : wrong) {
        choose(form, format);
        if (label == IDS_VQ_X_LENGTH)
            Field<QLineEdit>(form, label).setText(text);
        else
            Field<QComboBox>(form, label).setEditText(text);
        WithDialog<QMessageBox>([&] { form.accept(); }, [](QMessageBox& box) { box.accept(); });
        EXPECT_NE(form.result(), QDialog::Accepted) << text;
    }
    choose(form, Format::Text);
    Field<QComboBox>(form, IDS_VQ_X_CCSID).setEditText("1141"); // one that is not listed
    Field<QLineEdit>(form, IDS_VQ_X_FILE).setText(QString::fromStdString(File("new.txt")));
    form.accept();
    EXPECT_EQ(form.GetRequest().format.ccsid, 1141);
}

TEST_F(Dialogs, ParametersComeBack) {
    {
        ParametersDialog dialog({"year", "title"});
        dialog.show();
        QTest::keyClicks(dialog.findChildren<QLineEdit*>()[0], "1927");
        dialog.findChildren<QCheckBox*>()[1]->click();
        dialog.accept();
        EXPECT_EQ(dialog.GetTexts(), (ParameterTexts{{"year", "1927"}, {"title", std::nullopt}}));
    }
    EXPECT_EQ(ParametersDialog({"title", "other", "year"}).GetTexts(),
              (ParameterTexts{{"title", std::nullopt}, {"other", ""}, {"year", "1927"}}));
}

TEST_F(Dialogs, WorkIsCancelledAndItsFailureTold) {
    EXPECT_TRUE(RunTask(nullptr, IDS_VQ_T_SAVING, [](Progress&) {}));
    WithDialog<QMessageBox>(
        [] {
            EXPECT_FALSE(RunTask(nullptr, IDS_VQ_T_SAVING,
                                 [](Progress&) { throw Failure(kFileFailed, "cannot do it"); }));
        },
        [](QMessageBox& box) {
            EXPECT_EQ(box.text(), "Cannot do it");
            box.accept();
        });
    WithDialog<QProgressDialog>(
        [] {
            EXPECT_FALSE(RunTask(nullptr, IDS_VQ_T_SAVING, [](Progress& progress) {
                for (;;) {
                    progress.AddBytes(1);
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                }
            }));
        },
        [](QProgressDialog& dialog) {
            QTest::mouseClick(dialog.findChild<QPushButton*>(), Qt::LeftButton);
        });
    // As long as the work goes on, the window behind the dialog cannot be used.
    std::atomic<bool> ends = false;
    WithDialog<QProgressDialog>(
        [&] {
            RunTask(nullptr, IDS_VQ_T_SAVING, [&](Progress&) {
                while (!ends)
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
            });
        },
        [&](QProgressDialog& dialog) {
            dialog.close();
            dialog.reject();
            EXPECT_TRUE(dialog.isVisible());
            ends = true;
        });
}

// --- global variables ----------------------------------------------------------------------------

class Variables : public Dialogs {
protected:
    Variables() { GetGlobals().Initialize(); }
    static std::string Saved(const char* name) {
        return static_cast<const char*>(VNGetProfileString(3, "Global Variables", name, "none"));
    }
    static QTableWidgetItem* Value(VariablesDialog& dialog, const char* name) {
        auto* const table = dialog.findChild<QTableWidget*>();
        for (int row = 0; row < table->rowCount(); ++row)
            if (table->item(row, 0)->text() == name)
                return table->item(row, 1);
        return nullptr;
    }
};

TEST_F(Variables, ValuesAreValidatedAndSaved) {
    VariablesDialog dialog;
    dialog.show();
    Value(dialog, "TLXQW_STRIP_SPACE")->setText("0");
    for (const auto& [name, bad] : {std::pair("TLXQW_STRIP_SPACE", "2"), {"TLXCP_TENULL", ""}}) {
        const QString before = Value(dialog, name)->text();
        WithDialog<QMessageBox>([&] { Value(dialog, name)->setText(bad); },
                                [](QMessageBox& box) { box.accept(); });
        EXPECT_EQ(Value(dialog, name)->text(), before);
    }
    // A value that is still being typed counts.
    auto* const table = dialog.findChild<QTableWidget*>();
    table->setCurrentItem(Value(dialog, "TLXCP_TENULL"));
    table->editItem(Value(dialog, "TLXCP_TENULL"));
    auto* const editor = table->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "NULL");
    EXPECT_FALSE(Value(dialog, "TLXAO_NUM_FETCHED")->flags().testFlag(Qt::ItemIsEditable));
    dialog.accept();
    EXPECT_EQ(CGlobalVars::Get(CGlobalVars::TLXQW_STRIP_SPACE), "0");
    EXPECT_EQ(CGlobalVars::Get("TLXCP_TENULL"), "NULL");
    EXPECT_EQ(Saved("TLXCP_TENULL"), "NULL");
}

TEST_F(Variables, OwnOnesAreAddedAndDeleted) {
    VariablesDialog dialog;
    dialog.show();
    const auto add = [&](const char* name) {
        const auto use = [&](QInputDialog& input) {
            input.setTextValue(name);
            input.accept();
        };
        WithDialog<QInputDialog>([&] { Press(dialog, IDS_VQ_G_ADD); }, use);
    };
    add("mine");
    ASSERT_NE(Value(dialog, "MINE"), nullptr);
    Value(dialog, "MINE")->setText("x");
    for (const char* bad : {"mine", "TLXNEW", "", "1a"}) {
        SCOPED_TRACE(bad);
        WithDialog<QMessageBox>([&] { add(bad); }, [](QMessageBox& box) { box.accept(); });
    }
    auto* const table = dialog.findChild<QTableWidget*>();
    table->setCurrentCell(0, 0);
    WithDialog<QMessageBox>([&] { Press(dialog, IDS_VQ_G_DELETE); },
                            [](QMessageBox& box) { box.accept(); });
    add("other");
    Press(dialog, IDS_VQ_G_DELETE);
    EXPECT_EQ(Value(dialog, "OTHER"), nullptr);
    dialog.findChild<QCheckBox*>()->setChecked(true);
    dialog.accept();
    EXPECT_EQ(Saved("MINE"), "x");
    EXPECT_EQ(CGlobalVars::Get("MINE"), "x");
    EXPECT_EQ(Saved("OTHER"), "none");
}

/// What another program has saved is shown, not overwritten; what no profile has stays.
TEST_F(Variables, TheyAreReadAnewAndSavedAfterAChangeOnly) {
    const auto elsewhere = [](const char* name, const char* value) {
        ASSERT_TRUE(VNWriteProfileString(3, "Global Variables", name, value));
    };
    const CString own("MINE");
    const CString value("here only");
    int added = 0;
    GetGlobals().AddGlobalVariable(&own, &value, added);
    const CString fetched("7");
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NUM_FETCHED, &fetched);
    elsewhere("TLXCP_TENULL", "theirs");
    for (const bool change : {false, true}) {
        VariablesDialog dialog;
        dialog.show();
        EXPECT_EQ(Value(dialog, "TLXCP_TENULL")->text(), "theirs");
        EXPECT_EQ(Value(dialog, "MINE")->text(), "here only");
        EXPECT_EQ(Value(dialog, "TLXAO_NUM_FETCHED")->text(), "7");
        if (change)
            Value(dialog, "TLXDC_CURRENCY")->setText("EUR");
        elsewhere("TLXCP_TEDFLT", change ? "later" : "soon"); // while it is open
        dialog.accept();
        EXPECT_EQ(Saved("TLXDC_CURRENCY"), change ? "EUR" : "none");
        EXPECT_EQ(Saved("TLXCP_TEDFLT"), change ? "later" : "soon");
        EXPECT_EQ(Saved("TLXCP_TENULL"), "theirs");
    }
}

TEST_F(Variables, TheDialogSaysWhySettingsAreNotSaved) {
    std::filesystem::remove(File("profile.ini"));
    std::filesystem::create_directory(File("profile.ini")); // neither read nor written
    QTest::qWait(20);
    VariablesDialog dialog;
    dialog.show();
    Value(dialog, "TLXDC_CURRENCY")->setText("EUR");
    WithDialog<QMessageBox>([&] { dialog.accept(); },
                            [](QMessageBox& box) {
                                EXPECT_TRUE(box.text().contains("not a plain file"));
                                box.accept();
                            });
    std::filesystem::remove(File("profile.ini"));
    QTest::qWait(20);
    VariablesDialog again; // the value is still there, and is saved now
    EXPECT_EQ(Value(again, "TLXDC_CURRENCY")->text(), "EUR");
    Value(again, "TLXCP_TENULL")->setText("none");
    again.accept();
    EXPECT_EQ(Saved("TLXDC_CURRENCY"), "EUR");
}

} // namespace
} // namespace vnquery::test
