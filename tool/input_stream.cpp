#include "tool/input_stream.h"

#include <cerrno>
#include <cstring>

#include "tool/failure.h"
#include "tool/standard_stream.h"
#include "tool/system.h"

namespace vrltool {

InputStream OpenInput(const std::string& path) {
    InputStream file(path == kStandardStream ? stdin : OpenFile(path, "rb"));
    if (!file) throw Failure(std::strerror(errno));
    return file;
}

}  // namespace vrltool
