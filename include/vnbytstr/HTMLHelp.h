// CVNHTMLHelp: opens a program's help pages by their numbers.
//
// The pages lie beside the program, in a folder for each language: Help/l.DEU/, Help/l.ENU/. That
// of the user interface's language is used (GetUILanguage), or the English one when it has no
// index. The index is a text file, named after the program with ".ind" added:
//
//     Help index of vnquery          <- a heading, not read
//     100000,contents.htm            <- identifier, comma, page
//     12,export.htm#records          <- a page of that folder, with an anchor
//     13,http://www.example.com/     <- or an address
//
// An identifier is decimal digits, up to 4294967295. Lines end in a carriage return and a line
// feed; a line feed alone will do. Blanks at a line's beginning do not count. The first line for an
// identifier wins. An index may have up to 64 MiB.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <memory>
#include <unordered_map>

class CFile;

/// Serves the help requests of one program. Used on the thread of the user interface. Throws
/// nothing; message boxes tell what goes wrong.
class VNBYTSTR_API CVNHTMLHelp {
public:
    /// Pages that every help has.
    enum Topic : DWORD {
        contents = 100000,
        partialKeySearch = 100001,
        helpOnHelp = 100002,
    };
    /// What is asked for.
    enum Command : UINT {
        helpContext = 1, ///< data is an identifier of the framework: a topic's number above the
                         ///< base of its kind
        helpContents = 3,
        helpOnHelpCommand = 4,
        helpPartialKey = 0x105,
    };

    /// `program` opens the pages of the folder (a browser, or "xdg-open"); addresses go to the
    /// desktop's browser. Null is empty. A request that is under way counts as ended.
    explicit CVNHTMLHelp(const char* program);
    virtual ~CVNHTMLHelp();
    CVNHTMLHelp(const CVNHTMLHelp&) = delete;
    CVNHTMLHelp& operator=(const CVNHTMLHelp&) = delete;

    /// Opens the page of a request; does nothing while another request is being served.
    ///
    /// helpContents, helpOnHelpCommand and helpPartialKey stand for the topics above. helpContext
    /// makes an identifier of `data`: 0 is 34464; up to 0x10000 it stays; up to 0x20000, 0x30000,
    /// 0x50000 and above that, 0x10000, 0x20000, 0x30000 and 0x50000 are taken off. With any other
    /// command `data` is the identifier.
    ///
    /// One that is not in the index opens the contents. Without those, when the page's file is
    /// missing, and when the program that shows it cannot be started, a message box says that help
    /// is not available. The index is read at the first request that can.
    void DoHtmlHelp(DWORD data, UINT command);

protected:
    /// Finds the help folder and reads the index. Returns 0, with a message box, when that fails.
    /// Its reason is 1: the index cannot be opened or read; 2: it has no heading; 3: a line has no
    /// comma; 4: an identifier is no number; 5: it is too long, or memory ran out.
    BOOL InitializeHelp();

    static int m_bInProgress; ///< whether a request is being served

private:
    using Topics = std::unordered_map<DWORD, CString>;

    void OpenIndex(CFile& file);
    void Serve(DWORD data, UINT command);
    bool FindPage(DWORD topic, CString& page) const;
    bool OpenPage(const CString& page) const;

    std::unique_ptr<Topics> m_pTopics; // null until the index was read
    CString m_strHelpFolder;           // with its slash
    CString m_strIndexName;            // full name of the index
    CString m_strProgram;
};
