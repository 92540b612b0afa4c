// Global variables: the process's table of named texts that describe the connection and control
// queries, exports and reports.
//
// Entry 0 of the table is an unnamed placeholder, entries 1 to 59 are the built-in variables (an
// entry's index is its id), and those that the user adds follow, in the order they were
// added. docs/global-variables.md has all built-in ones with their defaults and ranges.
//
// Names are matched by the system locale's rules ignoring case, kana type and width; i and I are
// one letter in every locale. Every value is a text of any bytes; what a built-in variable takes is
// said at Validate. Values are kept in the profile up to their first NUL.
//
// The functions answer with a status and show nothing; none throws but CMemoryException. The table
// is not locked: all calls belong to one thread.
#pragma once

#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

#include <cstring>
#include <memory>
#include <string_view>

/// One variable. The table owns it.
class VNBYTSTR_API CGlobalVar : public CObject {
    DECLARE_DYNAMIC(CGlobalVar)
public:
    /// A variable with its value.
    CGlobalVar(const CString& name, const CString& value) : m_strName(name), m_strValue(value) {}

    /// Name and value.
    const CString& GetName() const noexcept { return m_strName; }
    const CString& GetValue() const noexcept { return m_strValue; }
    /// 0 for an ordinary variable; see CGlobalVars::SetGlobalVariableFlag.
    int GetFlag() const noexcept { return m_nFlag; }

private:
    friend class CGlobalVars;
    /// Equal for equal names; within the object when it is short, so that comparing it costs no
    /// second look into memory.
    class Key {
    public:
        Key() = default;
        ~Key();
        Key(const Key&) = delete;
        Key& operator=(const Key&) = delete;
        void Set(std::string_view key); ///< once
        std::string_view View() const noexcept { return {IsLong() ? Long() : m_short, m_length}; }

    private:
        bool IsLong() const noexcept { return m_length > sizeof m_short; }
        char* Long() const noexcept {
            char* text = nullptr;
            std::memcpy(&text, m_short, sizeof text);
            return text;
        }
        DWORD m_length = 0;
        char m_short[24]{}; // or a pointer to the key
    };
    CString m_strName;
    CString m_strValue;
    int m_nFlag = 0;
    DWORD m_dwSerial = 0; ///< grows from entry to entry
    DWORD m_dwNumber = 0; ///< place in memory
    Key m_key;
};

/// Texts of the user interface's language that the table uses, as of Initialize. Empty
/// when there is no resource library.
struct SGlobalStrings {
    CString m_strLanguage;      ///< the language's name: TLXAO_NLF_LANG
    CString m_strHTMLReference; ///< text of a link in an HTML report: TLXQW_HTML_REFTXT
};

class VNBYTSTR_API CGlobalVars : public CObject {
    DECLARE_DYNAMIC(CGlobalVars)
public:
    /// The built-in variables.
    enum GlobalVarIDs : int {
        TLXAO_BATCH = 1,
        TLXAO_CONNECT_ID,
        TLXAO_CURSOR_OPEN,
        TLXAO_DBCS,
        TLXAO_NLF_LANG,
        TLXAO_NUM_FETCHED,
        TLXAO_OBJ_NAME,
        TLXAO_OBJ_OWNER,
        TLXAO_PZR_RELEASE,
        TLXAO_PZR_VER_RLS,
        TLXAO_QRY_SUBTYPE,
        TLXAO_QUERY_MODEL,
        TLXAO_SYSTEM_ID,
        TLXCP_TEDFLT,
        TLXCP_TENULL,
        TLXDC_CURRENCY,
        TLXDC_DISPLAY_RPT,
        TLXDC_LIST_ORDER,
        TLXEC_FORM_LANG,
        TLXEC_NLFCMD_LANG,
        TLXEC_RESET_RPT,
        TLXEC_SHARE,
        TLXEC_SP_RS_NUM,
        TLXQW_AUTOMATION,
        TLXQW_CONF_AUTOC,
        TLXQW_CONNECTIONS,
        TLXQW_DQ,
        TLXQW_EXP_DT_FRMT,
        TLXQW_EXP_OUT_MDE,
        TLXQW_FST_SV_DATA,
        TLXQW_HTML_REFTXT,
        TLXQW_ORIENTATION,
        TLXQW_PRINT_OUTPUT,
        TLXQW_PROC_OUTPUT,
        TLXQW_PROC_WNDWS,
        TLXQW_QUERY_LANG,
        TLXQW_QUERY_PREP,
        TLXQW_REUSE_OBJS,
        TLXQW_RPT_COPIES,
        TLXQW_RPT_FONT,
        TLXQW_RPT_FONT_BD,
        TLXQW_RPT_FONT_CS,
        TLXQW_RPT_FONT_IT,
        TLXQW_RPT_FONT_SZ,
        TLXQW_RPT_LEN_TYP,
        TLXQW_RPT_NUM_CHR,
        TLXQW_RPT_NUM_LNS,
        TLXQW_RPT_ORIENT,
        TLXQW_RPT_OUT_TYP,
        TLXQW_RPT_USE_PS,
        TLXQW_RPT_WID_TYP,
        TLXQW_RPT_TD_TYP,
        TLXQW_RPT_TT_TYP,
        TLXQW_SHOW_QUERY,
        TLXQW_SQ,
        TLXQW_STRIP_SPACE,
        TLXQW_SV_DATA_C_S,
        TLXQW_SV_DATA_T_M,
        TLXQW_UEDIT_DLL
    };

    /// What the functions that return an int answer.
    enum EStatus {
        Success = 0,
        ReservedPrefix = 1,   ///< the name begins with TLX, and no such variable is here
        Duplicate = 2,        ///< there is a variable of that name
        UnknownName = 3,      ///< there is no such variable, id or index
        EmptyName = 4,        ///< the name is empty, or null
        InvalidCharacter = 5, ///< the name has a character that names do not have
        InvalidValue = 6,     ///< the variable does not take that value
        BuiltIn = 7,          ///< not with a built-in variable
        ProgramOnly = 8,      ///< only the program itself sets that variable
        NotSaved = 9,         ///< the profile could not be written (a message says why)
        NotInitialized = 10   ///< Initialize has not run yet
    };

    /// An empty table, independent of the process's. Programs use Get.
    CGlobalVars();
    ~CGlobalVars() override;

    /// The process's table; made empty at the first call, it lives as long as the process.
    static CGlobalVars& Get();

    /// Rebuilds the table: the built-in variables with the values the profile has (one that
    /// Validate refuses counts as missing) or their defaults, and, when the number "SaveGlobals"
    /// under "Options" (profile root 3) is not 0, the user's variables in "Global Variables".
    /// Returns Success. Takes time in proportion to the size of that section. After an exception
    /// the table is empty, as before the first call, and nothing of it is saved.
    int Initialize();

    /// The value of a variable of the process's table, without a copy; m_strEmptyValue when the
    /// variable does not exist. Valid until the variable changes.
    static const CString& Get(const char* name);
    static const CString& Get(GlobalVarIDs id);

    /// Sets a variable, when Validate takes the value; else it keeps its old one, and the answer is
    /// UnknownName, ReservedPrefix or InvalidValue. A null value is the empty text. `changed`
    /// (unless null) receives 1 when the value is (or, with `checkOnly`, would be) another one than
    /// before, else 0; `position` what Validate gives. `checkOnly` other than 0 sets nothing;
    /// `byUser` other than 0 refuses, with ProgramOnly, the variables that only the program sets.
    int SetGlobalVarValue(GlobalVarIDs id, const CString* value, int* changed = nullptr,
                          int* position = nullptr, int checkOnly = 0, int byUser = 0);
    int SetGlobalVarValue(const CString* name, const CString* value, int* changed = nullptr,
                          int* position = nullptr, int checkOnly = 0, int byUser = 0);
    /// The same with literals and strings as they are.
    int SetGlobalVarValue(GlobalVarIDs id, const CString& value, int* changed = nullptr,
                          int* position = nullptr, int checkOnly = 0, int byUser = 0) {
        return SetGlobalVarValue(id, &value, changed, position, checkOnly, byUser);
    }
    int SetGlobalVarValue(const CString& name, const CString& value, int* changed = nullptr,
                          int* position = nullptr, int checkOnly = 0, int byUser = 0) {
        return SetGlobalVarValue(&name, &value, changed, position, checkOnly, byUser);
    }

    /// Reads a variable; `asLiteral` other than 0: as Convert makes it. The value is empty when the
    /// answer is UnknownName or ReservedPrefix.
    int GetGlobalVarValue(GlobalVarIDs id, CString& value, int asLiteral = 0) const;
    int GetGlobalVarValue(const CString& name, CString& value, int asLiteral = 0) const;

    /// Adds a user's variable, its name in (ASCII) upper case. A name begins with a letter A to Z
    /// or one of $~{}?@#%\ and goes on with these, digits and underscores; it does not begin with
    /// TLX. The answer is, in this order, ReservedPrefix, EmptyName, InvalidCharacter or Duplicate
    /// when it cannot be added. A value that is exactly ' or exactly ( is passed through
    /// ParseGlobal first, any other is taken as it is; null is the empty text. `added` receives 1
    /// when it was added or, with `checkOnly` other than 0, which adds nothing, could be; else 0.
    int AddGlobalVariable(const CString* name, const CString* value, int& added, int checkOnly = 0);
    /// The same with literals and strings as they are.
    int AddGlobalVariable(const CString& name, const CString& value, int& added,
                          int checkOnly = 0) {
        return AddGlobalVariable(&name, &value, added, checkOnly);
    }

    /// Removes a user's variable: BuiltIn for the others. With `checkOnly` other than 0 it stays,
    /// and the answer tells whether it could be removed; with `ignoreMissing` other than 0 it is a
    /// success when there is no such variable.
    int DeleteGlobalVariable(const CString* name, int checkOnly = 0, int ignoreMissing = 0);
    int DeleteGlobalVariable(const CString& name, int checkOnly = 0, int ignoreMissing = 0) {
        return DeleteGlobalVariable(&name, checkOnly, ignoreMissing);
    }

    /// Number of entries: 60 and the user's variables; 0 before Initialize.
    int GetSize() const noexcept { return m_arrVars.GetSize(); }
    /// Name and value of the entry at `index`, from 0; UnknownName when there is none.
    int GetGlobalVariable(int index, CString& name, CString& value, int asLiteral = 0) const;

    /// Sets a user's variable aside (a flag other than 0), or makes it an ordinary one again. One
    /// that is set aside has its entry still and is saved, but names do not find it, and another
    /// one of its name can be added. BuiltIn, UnknownName; Duplicate when there is an ordinary one
    /// of that name already.
    int SetGlobalVariableFlag(int index, int flag);

    /// Whether a variable takes a value: Success or InvalidValue; UnknownName or ReservedPrefix
    /// when there is no such variable. Switches are "0" or "1"; numbers decimal digits, with a
    /// minus sign when below 0, in the variable's range; the markers TLXCP_TEDFLT and TLXCP_TENULL
    /// and the name of the report font are not empty; TLXQW_SQ and TLXQW_DQ are one character. All
    /// other variables take any text. `position` (unless null) receives the index of the first byte
    /// that does not fit, 0 when the whole value does not (out of range, empty), -1 when all is
    /// well.
    int Validate(const CString* name, const CString* value, int* position) const;
    int Validate(const CString& name, const CString& value, int* position = nullptr) const {
        return Validate(&name, &value, position);
    }

    /// The name of a built-in variable; empty for any other id. GetIDFromName is its reverse: 0
    /// when the name is not that of a built-in variable.
    static const char* GetNameFromID(GlobalVarIDs id) noexcept;
    static GlobalVarIDs GetIDFromName(const char* name);
    /// Whether a name belongs to the host's command language: it is known, but in no table.
    static bool IsReservedName(const char* name);

    /// What a built-in variable is, in a few words, and in full; in the language of the user
    /// interface. UnknownName, and an empty text, for any other id and when no resource library has
    /// the text.
    static int GetDescriptionFromID(GlobalVarIDs id, CString& text);
    static int GetFullDescriptionFromID(GlobalVarIDs id, CString& text);

    /// Texts of the user interface's language, as of Initialize.
    const SGlobalStrings& GetGlobalStrings() const noexcept { return m_strings; }

    /// Saves to "Global Variables" (profile root 3): when "SaveGlobals" under "Options" is not 0,
    /// the section is emptied and the user's variables are written; in any case the built-in ones
    /// that are kept. A value that Initialize found in the profile and refused stays there until
    /// the variable is changed. After an Initialize that could not read the profile the section is
    /// not emptied, and of the built-in variables only those that were changed since are written.
    /// The profile file changes in one step, or, with NotSaved, not at all.
    int SaveToRegistry() const;

    /// What a quoted or parenthesised value stands for. After an apostrophe: what follows, up to
    /// the closing apostrophe, two in a row standing for one. After an opening parenthesis: up to
    /// its closing one. Where the closing one is missing, up to the end, so that a lone ' or ( is
    /// the empty text. Any other value stays.
    static void ParseGlobal(CString& value);
    /// The reverse: puts the value between apostrophes, with those in it doubled.
    static void Convert(CString& value);

    /// What is read where there is no variable.
    static const CString m_strEmptyValue;

    /// Checks the table; throws in debug builds when it is broken.
    void AssertValid() const override;

private:
    friend VNBYTSTR_API bool IsNullValue(const char* text);
    struct SIndex;
    struct SUnread;

    CGlobalVar* At(int index) const;
    CGlobalVar* Find(std::string_view name) const;
    CGlobalVar* FindById(int id) const;
    int WhyMissing(const char* name) const;
    int Position(const CGlobalVar& var) const;
    int SetValue(CGlobalVar& var, const CString* value, int* changed, int* position, int checkOnly,
                 int byUser);
    int Append(const CString& name, const CString& value);
    void DeleteAll() noexcept;
    void AddBuiltIns();
    void AddSavedVariables();
    CString InitialValue(int id) const;
    void Check();

    CObArray m_arrVars; ///< CGlobalVar objects, owned
    SGlobalStrings m_strings;
    std::unique_ptr<SIndex> m_pIndex;
    std::unique_ptr<SUnread> m_pUnread;
    DWORD m_dwNextSerial = 0;
    int m_nChanges = 0;

    static CGlobalVars* m_Singleton; ///< null until Get
};

/// The process's table.
VNBYTSTR_API CGlobalVars& GetGlobals();

/// Whether a text is the null marker: the value of TLXCP_TENULL, or "-" while the process's table
/// has not been made and initialised. A null text is the empty one.
VNBYTSTR_API bool IsNullValue(const char* text);
