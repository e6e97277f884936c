#include "tool/input_stream.h"

#include <cerrno>
#include <cstring>

#include "tool/failure.h"
#include "tool/standard_stream.h"

namespace vrltool {

InputStream OpenInput(const std::string& path) {
    InputStream file(path == kStandardStream ? stdin : std::fopen(path.c_str(), "rb"));
    if (!file) throw Failure(std::strerror(errno));
    return file;
}

}  // namespace vrltool
