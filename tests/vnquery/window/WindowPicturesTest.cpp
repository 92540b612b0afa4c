// Pictures of the window, for people to look at: VNQUERY_PICTURES names the folder they go to.
#include "examples/vnquery/window/Commands.h"
#include "tests/vnquery/window/WindowRun.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/window/ComboBox.h"

#include <cstdlib>
#include <fstream>

#include <QBuffer>
#include <QImage>
#include <QPainter>

namespace vnquery::test {
namespace {

/// A poster of a kind, as a file's bytes in hexadecimal digits.
std::string Poster(int hue) {
    QImage image(240, 320, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, 320);
    sky.setColorAt(0, QColor::fromHsv(hue, 150, 90));
    sky.setColorAt(1, QColor::fromHsv((hue + 40) % 360, 120, 240));
    painter.fillRect(image.rect(), sky);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromHsv((hue + 180) % 360, 90, 250));
    painter.drawEllipse(130, 50, 70, 70);
    painter.setBrush(QColor::fromHsv(hue, 200, 60));
    painter.drawPolygon(
        QPolygon({{0, 320}, {0, 230}, {70, 160}, {140, 250}, {190, 200}, {240, 260}, {240, 320}}));
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes.toHex().toStdString();
}

class Pictures : public WindowTest {
protected:
    void SetUp() override {
        const char* const folder = std::getenv("VNQUERY_PICTURES");
        if (!folder)
            GTEST_SKIP() << "VNQUERY_PICTURES is not set";
        m_folder = folder;
    }
    void OpenFilms() {
        const char* const titles[][3] = {{"Metropolis", "1927", "153"}, {"M", "1931", "117"},
                                         {"Casablanca", "1942", "102"}, {"Ikiru", "1952", "143"},
                                         {"Vertigo", "1958", "128"},    {"Playtime", "1967", "124"},
                                         {"Solaris", "1972", "167"},    {"Alien", "1979", "117"},
                                         {"Das Boot", "1981", "149"},   {"Brazil", "1985", "143"},
                                         {"Tampopo", "1985", "114"},    {"Yi Yi", "2000", "173"}};
        std::string sql = "create table film(id integer primary key, title text not null, year "
                          "integer, minutes integer default 90, rating real, poster blob, plot "
                          "text);";
        int i = 0;
        for (const auto& [title, year, minutes] : titles) {
            ++i;
            sql += "insert into film values (" + std::to_string(i) + ", '" + title + "', " + year +
                   ", " + minutes + ", " +
                   (i % 4 == 3 ? "null" : std::to_string(7 + i % 3) + ".5") + ", " +
                   (i % 5 == 0 ? "null" : "x'" + Poster(i * 47 % 360) + "'") +
                   ", replace(hex(zeroblob(" + std::to_string(i * 90) + ")), '00', 'plot. '));";
        }
        MakeDatabase(sql);
        std::filesystem::rename(Database(), File("films.sqlite"));
        Open();
        std::filesystem::current_path(m_files.Path());
        Window().Connect({"films.sqlite", ""});
        View().SetSql("select id, title, year, minutes, rating, poster, plot\nfrom film\norder by "
                      "year");
        View().Run();
        WaitFor([&] { return !View().IsBusy(); });
    }
    std::string m_folder;
};

TEST_F(Pictures, LeftToRight) {
    OpenFilms();
    List().SetCurrentCell(7, 1);
    List().Sort(4);
    SavePicture(Window(), m_folder + "/window.png");
    List().SetCurrentCell(7, 1);
    View().EditCell();
    Type("Ikiru (To Live)");
    SavePicture(Window(), m_folder + "/editor.png");
    Key(Qt::Key_Return);
    List().SetCurrentCell(1, 5);
    WithDialog([&] { View().Zoom(); },
               [&](CWnd& dialog) {
                   SavePicture(dialog, m_folder + "/zoom.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
    WithDialog([&] { View().Zoom(); },
               [&](CWnd& dialog) {
                   dialog.SendDlgItemMessage(1002, CB_SETCURSEL, 1);
                   dialog.SendMessage(
                       WM_COMMAND, MAKEWPARAM(1002, CBN_SELCHANGE),
                       reinterpret_cast<LPARAM>(dialog.GetDlgItem(1002)->GetSafeHwnd()));
                   SavePicture(dialog, m_folder + "/zoom-bytes.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
    m_answers.m_answers = {IDOK};
    WithDialog([&] { View().Export(); },
               [&](CWnd& dialog) {
                   SavePicture(dialog, m_folder + "/export.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
    WithDialog([&] { Window().SendMessage(WM_COMMAND, kCmdGlobals); },
               [&](CWnd& dialog) {
                   SavePicture(dialog, m_folder + "/globals.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
    WithDialog([&] { Window().SendMessage(WM_COMMAND, kCmdConnect); },
               [&](CWnd& dialog) {
                   SavePicture(dialog, m_folder + "/connect.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
    WithDialog([&] { Window().SendMessage(WM_COMMAND, kCmdLanguage); },
               [&](CWnd& dialog) {
                   SavePicture(dialog, m_folder + "/language.png");
                   dialog.SendMessage(WM_COMMAND, IDCANCEL);
               });
}

TEST_F(Pictures, RightToLeft) {
    ASSERT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", "HEB"));
    LoadTexts();
    OpenFilms();
    List().SetCurrentCell(2, 1);
    SavePicture(Window(), m_folder + "/right-to-left.png");
    VNWriteProfileString(3, "Options", "UILanguage", nullptr);
    m_window.reset();
    LoadTexts();
}

} // namespace
} // namespace vnquery::test
