#pragma once

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "tests/tool/png_files.h"

namespace vrltool {

namespace fs = std::filesystem;

inline std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Outcome {
    int status;
    std::string out, err;
};

/// Runs the program itself, or the command VRL_TOOL of the environment in its place, in an empty folder of its own.
class Program : public testing::Test {
 protected:
    Program() {
        std::string name = testing::TempDir() + "vrlXXXXXX";
        folder_ = mkdtemp(name.data());
        log_ = fs::path(name + ".log");
        fs::create_directory(log_);
        Write("square.svg", "<svg><rect x='1' y='1' width='2' height='2'/></svg>");
    }
    ~Program() override {
        fs::remove_all(folder_);
        fs::remove_all(log_);
    }

    void Write(const std::string& name, const std::string& text) { std::ofstream(folder_ / name) << text; }

    static std::string Tool() {
        const char* instead = std::getenv("VRL_TOOL");
        return instead == nullptr ? VRL_TOOL_PATH : instead;
    }
    /// `arguments` are the shell's, redirections included.
    Outcome Run(const std::string& arguments) {
        const std::string command = "cd " + folder_.string() + " && " + Tool() + " " + arguments;
        const std::string logs = " >" + (log_ / "out").string() + " 2>" + (log_ / "err").string();
        const int status = std::system(("{ " + command + "; }" + logs).c_str());
        return {WEXITSTATUS(status), Content(log_ / "out"), Content(log_ / "err")};
    }
    std::vector<std::uint32_t> Samples(const std::string& name) { return ReadPngFile((folder_ / name).string()).samples; }
    /// Starts the program with `arguments`, sends it SIGINT once `ready` has returned, and gives its exit status; -1 when it
    /// did not exit by itself.
    int Interrupt(std::vector<const char*> arguments, const std::function<void()>& ready) {
        arguments.insert(arguments.begin(), "vrl");
        arguments.push_back(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            signal(SIGINT, SIG_DFL);
            if (chdir(folder_.c_str()) == 0) execv(VRL_TOOL_PATH, const_cast<char* const*>(arguments.data()));
            _exit(99);
        }
        ready();
        kill(child, SIGINT);
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::vector<std::string> Files() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename());
        return names;
    }

    fs::path folder_, log_;
};

}  // namespace vrltool
