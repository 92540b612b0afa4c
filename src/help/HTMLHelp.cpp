#include "vnbytstr/HTMLHelp.h"

#include "messages/ResourceIds.h"
#include "src/help/HelpIndex.h"
#include "src/os/Paths.h"
#include "src/os/System.h"
#include "vnbytstr/Interaction.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/Module.h"

#include <array>
#include <string>

using vnbytstr::Interaction;
using vnbytstr::detail::HelpFailure;
using vnbytstr::detail::HelpIndexException;
using vnbytstr::detail::WithoutExceptions;

namespace {

constexpr DWORD kMaxIndexLength = 64u << 20;
constexpr const char* kFileFailure =
    "Help system could not be loaded because of reason %d\nCFile::GetFilePath() returned: %s\n"
    "File exception code: %d.\nFile exception OS error: %d\nException file name: %s\n\n"
    "Expected index file location:\n\t %s\n\nException text:\n\t %s.";
constexpr const char* kOtherFailure =
    "Help system could not be loaded with reason %d.\n\n Expected index file location:\n\t %s\n\n"
    "Exception text:\n\t %s.";

/// Sets a flag for the time of a scope.
class FlagHolder {
public:
    explicit FlagHolder(int& flag) : m_flag(flag) { m_flag = 1; }
    ~FlagHolder() { m_flag = 0; }
    FlagHolder(const FlagHolder&) = delete;
    FlagHolder& operator=(const FlagHolder&) = delete;

private:
    int& m_flag;
};

/// Deletes a caught exception at the end of a scope.
class ExceptionHolder {
public:
    explicit ExceptionHolder(CException* error) : m_error(error) {}
    ~ExceptionHolder() { m_error->Delete(); }
    ExceptionHolder(const ExceptionHolder&) = delete;
    ExceptionHolder& operator=(const ExceptionHolder&) = delete;

private:
    CException* m_error;
};

/// The folder of the program, with its slash.
std::string ProgramFolder() {
    const std::string name = vnbytstr::GetModuleFileName(AfxGetInstanceHandle());
    return std::string(vnbytstr::FolderPrefixOf(name));
}

CString TextOf(const CException& error) {
    std::array<char, 1024> text{};
    error.GetErrorMessage(text.data(), static_cast<UINT>(text.size()));
    return text.data();
}

constexpr int kMaxError = 32; // what ShellExecute returns at most when it failed

/// A path as one argument of a program: see Interaction::ShellExecute. The folder that a program is
/// in may be called anything.
CString AsArgument(const CString& path) {
    std::string argument;
    bool hasBlank = false;
    for (int i = 0; i < path.GetLength(); ++i) {
        hasBlank |= path[i] == ' ' || path[i] == '\t';
        if (path[i] == '"')
            argument += '\\';
        argument += path[i];
    }
    return (hasBlank ? "\"" + argument + "\"" : argument).c_str();
}

/// Whether the name of a page that an index gives may be part of an argument: a quote would end the
/// argument, and a backslash at the end would escape its closing quote.
bool IsSafe(const CString& page) {
    if (page.Right(1) == "\\")
        return false;
    for (int i = 0; i < page.GetLength(); ++i) {
        const auto c = static_cast<unsigned char>(page[i]);
        if (c < 0x20 || c == '"')
            return false;
    }
    return true;
}

} // namespace

int CVNHTMLHelp::m_bInProgress = 0;

CVNHTMLHelp::CVNHTMLHelp(const char* program) : m_strProgram(program) { m_bInProgress = 0; }

CVNHTMLHelp::~CVNHTMLHelp() = default;

void CVNHTMLHelp::DoHtmlHelp(DWORD data, UINT command) {
    if (m_bInProgress != 0)
        return;
    const FlagHolder holder(m_bInProgress);
    WithoutExceptions(
        [&] {
            Serve(data, command);
            return 0;
        },
        0);
}

void CVNHTMLHelp::Serve(DWORD data, UINT command) {
    if (m_pTopics == nullptr && !InitializeHelp())
        return;
    CString page;
    const DWORD topic = vnbytstr::detail::MapHelpRequest(data, command);
    const bool isFound = FindPage(topic, page) || FindPage(contents, page);
    if (!isFound || !OpenPage(page))
        DisplayMessageBox(IDS_HELP_NOT_AVAILABLE, IDS_HELP_CAPTION, nullptr, MB_OK | MB_ICONSTOP,
                          0);
}

bool CVNHTMLHelp::FindPage(DWORD topic, CString& page) const {
    const auto found = m_pTopics->find(topic);
    if (found == m_pTopics->end())
        return false;
    page = found->second;
    return true;
}

/// False when there is no such page, or what shows it cannot be started.
bool CVNHTMLHelp::OpenPage(const CString& page) const {
    const std::string_view text(page, static_cast<std::size_t>(page.GetLength()));
    Interaction& interaction = Interaction::Current();
    if (vnbytstr::detail::IsAddress(text))
        return interaction.ShellExecute("open", page, nullptr, nullptr, SW_SHOWNORMAL) > kMaxError;
    const std::string_view file = vnbytstr::detail::FileOfPage(text);
    const CString fileName = m_strHelpFolder + CString(file.data(), static_cast<int>(file.size()));
    vnbytstr::FileStatus status;
    if (!IsSafe(page) || vnbytstr::System::Current().GetFileStatus(fileName, status) != 0)
        return false;
    return interaction.ShellExecute("open", m_strProgram, AsArgument(m_strHelpFolder + page),
                                    m_strHelpFolder, SW_SHOWNORMAL) > kMaxError;
}

BOOL CVNHTMLHelp::InitializeHelp() {
    CFile file;
    const auto failed = [this](const CString& text) -> BOOL {
        m_pTopics.reset(); // so that the next request tries again
        AfxMessageBox(text, MB_OK | MB_ICONSTOP, 0);
        return FALSE;
    };
    const auto failedOtherwise = [&](HelpFailure reason, const CString& what) {
        CString text;
        FormatString(text, kOtherFailure, static_cast<int>(reason), m_strIndexName, what);
        return failed(text);
    };
    try {
        m_pTopics = std::make_unique<Topics>();
        OpenIndex(file);
        const DWORD length = file.GetLength();
        if (length > kMaxIndexLength)
            throw new HelpIndexException(HelpFailure::TooLarge, "The index passes 64 MiB");
        std::string text(length, '\0');
        text.resize(file.Read(text.data(), length));
        vnbytstr::detail::ReadHelpIndex(text, *m_pTopics);
        return TRUE;
    } catch (CFileException* error) {
        const ExceptionHolder holder(error);
        CString text;
        FormatString(text, kFileFailure, static_cast<int>(HelpFailure::NotReadable),
                     file.GetFilePath(), error->m_cause, error->m_lOsError, error->m_strFileName,
                     m_strIndexName, TextOf(*error));
        return failed(text);
    } catch (HelpIndexException* error) {
        const ExceptionHolder holder(error);
        return failedOtherwise(error->GetReason(), TextOf(*error));
    } catch (CException* error) {
        const ExceptionHolder holder(error);
        return failedOtherwise(HelpFailure::TooLarge, TextOf(*error));
    } catch (const std::exception& error) {
        return failedOtherwise(HelpFailure::TooLarge, error.what());
    }
}

void CVNHTMLHelp::OpenIndex(CFile& file) {
    const CString folder = (ProgramFolder() + "Help/l.").c_str();
    const CString name = AfxGetAppName() + ".ind";
    CFileException error;
    for (const CString& language : {GetUILanguage(), CString("ENU")}) {
        m_strHelpFolder = vnbytstr::AsFolderPrefix(std::string(folder + language)).c_str();
        m_strIndexName = m_strHelpFolder + name;
        if (file.Open(m_strIndexName, CFile::modeRead | CFile::shareDenyNone, &error))
            return;
    }
    AfxThrowFileException(error.m_cause, error.m_lOsError, error.m_strFileName);
}
