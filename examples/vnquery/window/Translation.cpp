#include "vnquery/window/Translation.h"

#include "vnquery/messages/Messages.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Profile.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <QWidget>

#include <map>

namespace vnquery {

namespace {

/// Qt's name of a language, for its translation files.
QString LocaleOf(const std::string& code) {
    static const std::map<std::string, const char*> names = {
        {"DEU", "de"}, {"FRA", "fr"}, {"ESN", "es"},    {"ITA", "it"}, {"PTB", "pt_BR"},
        {"JPN", "ja"}, {"KOR", "ko"}, {"CHT", "zh_TW"}, {"HEB", "he"}, {"ARE", "ar"}};
    const auto found = names.find(code);
    return QString::fromLatin1(found == names.end() ? "en" : found->second);
}

} // namespace

void UseTextLanguage() {
    static QTranslator* translator = nullptr;
    LoadTexts();
    delete translator; // takes its texts away
    translator = new QTranslator(qApp);
    const CString code = GetUILanguage();
    if (translator->load("qtbase_" + LocaleOf(static_cast<const char*>(code)),
                         QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(translator);
    CGlobalVars fresh; // knows the name of the language
    CString language;
    fresh.Initialize();
    fresh.GetGlobalVarValue(CGlobalVars::TLXAO_NLF_LANG, language);
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NLF_LANG, language);
    QApplication::setLayoutDirection(AreTextsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    // Qt tells the widgets only where it has texts of its own.
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        QEvent change(QEvent::LanguageChange);
        QApplication::sendEvent(widget, &change); // and its children
    }
}

bool SetTextLanguage(const QString& code) {
    const bool isKept = VNWriteProfileString(3, "Options", "UILanguage", code.toLatin1()) != FALSE;
    UseTextLanguage();
    return isKept;
}

} // namespace vnquery
