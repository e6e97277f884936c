#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace vrltool {

struct CloseUnlessStandard {
    void operator()(std::FILE* file) const {
        if (file != stdin) std::fclose(file);
    }
};

/// A file open for reading, or standard input, which stays open.
using InputStream = std::unique_ptr<std::FILE, CloseUnlessStandard>;

/// @throws Failure  with the system's word for it, without the file's name
InputStream OpenInput(const std::string& path);

}  // namespace vrltool
