#pragma once

#include <cstdio>
#include <string>

// What systems do each in its own way. File names are UTF-8 everywhere, as std::filesystem has them too.

namespace vrltool {

/// Makes the standard streams ones that files cannot be mistaken for and that pass every byte unchanged.
void PrepareStandardStreams();

/// From here on `handler` is called, with a signal's number, when the user or the system asks the program to stop: from a
/// signal handler or from a thread of its own. A request that was ignored when the program started stays ignored.
void CatchStopRequests(void (*handler)(int signal));

/// Opens a file as fopen does. Null and errno when it cannot.
std::FILE* OpenFile(const std::string& path, const char* mode);

/// Opens a file for writing that was not there before. Null and errno, EEXIST for one, when it cannot.
std::FILE* CreateNewFile(const std::string& path);

}  // namespace vrltool
