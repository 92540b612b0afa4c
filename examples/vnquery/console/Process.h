// The process around the program: its signals and limits, its terminal, its memory.
#pragma once

#include <cstdint>
#include <string>

namespace vnquery {

/// To be called first. From here on a signal to end is remembered (see AwaitSignals); a closed
/// pipe and a file size limit are errors of the write; text is UTF-8, as the databases deliver it;
/// and as many files may be open as the system allows, since every large value has one.
void PrepareProcess();

/// Replaces the program's arguments by themselves in UTF-8, where they are in another encoding.
void TakeArguments(int& argc, char**& argv);

bool IsInputTerminal();
bool IsOutputTerminal();
bool IsErrorOutputTerminal();

/// The most memory that the process has had, in bytes; 0 when the system does not tell.
std::uint64_t GetPeakMemory();

/// All of the file, or of standard input where the name is "-". Throws Failure and Interrupted.
std::string ReadInput(const std::string& file);

} // namespace vnquery
