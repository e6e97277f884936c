// Runs a target once over every file of the folders given: the saved inputs as a test, without a fuzzer.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/require.h"

int main(int count, char** folders) {
    int files = 0;
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(folders[i])) {
            std::fprintf(stderr, "%s\n", entry.path().filename().string().c_str());
            std::ifstream stream(entry.path(), std::ios::binary);
            const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    std::printf("%d inputs\n", files);
    return files > 0 ? 0 : 1;
}
