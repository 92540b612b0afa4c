// As console/Process.cpp, on Windows.
#include "vnquery/console/Process.h"

#include "vnbytstr/framework/File.h"
#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <psapi.h>
#include <shellapi.h>

#include <fcntl.h>
#include <io.h>

#include <cstdlib>
#include <optional>
#include <vector>

namespace vnquery {

namespace {

std::string ToUtf8(const wchar_t* text) {
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.resize(static_cast<std::size_t>(size) - 1); // without the NUL
    return result;
}

} // namespace

void PrepareProcess() {
    AwaitSignals();
    ::_putenv_s("VNBYTSTR_CODEPAGE", "65001");
    ::SetConsoleOutputCP(CP_UTF8);
    ::SetConsoleCP(CP_UTF8);
    for (const int stream : {0, 1}) // bytes as they are
        ::_setmode(stream, _O_BINARY);
}

void TakeArguments(int& argc, char**& argv) {
    static std::vector<std::string> texts;
    static std::vector<char*> pointers;
    wchar_t** const wide = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    for (int i = 0; wide && i < argc; ++i)
        texts.push_back(ToUtf8(wide[i]));
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    argc = static_cast<int>(texts.size());
    argv = pointers.data();
}

bool IsInputTerminal() { return ::_isatty(0) != 0; }
bool IsOutputTerminal() { return ::_isatty(1) != 0; }
bool IsErrorOutputTerminal() { return ::_isatty(2) != 0; }

std::uint64_t GetPeakMemory() {
    PROCESS_MEMORY_COUNTERS counters{};
    return ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters)
               ? counters.PeakWorkingSetSize
               : 0;
}

std::string ReadInput(const std::string& file) try {
    std::optional<CFile> opened; // which knows names of every kind
    if (file != "-")
        opened.emplace(file.c_str(), CFile::modeRead);
    std::string content;
    char block[65536];
    for (int count = 1; count > 0;) {
        CheckInterrupted();
        count = file == "-" ? ::_read(0, block, sizeof block)
                            : static_cast<int>(opened->Read(block, sizeof block));
        content.append(block, static_cast<std::size_t>(count > 0 ? count : 0));
    }
    return content;
} catch (CException* error) {
    throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_READ_FILE, {file}) + ": " + TakeMessage(error));
}

} // namespace vnquery
