#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/tool/png_reading.h"

// Runs the program itself, in an empty folder of its own.

namespace vrltool {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

std::string Content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Outcome {
    int status;
    std::string out, err;
};

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

    /// `arguments` are the shell's, redirections included.
    Outcome Run(const std::string& arguments) {
        const std::string command = "cd " + folder_.string() + " && " VRL_TOOL_PATH " " + arguments;
        const std::string logs = " >" + (log_ / "out").string() + " 2>" + (log_ / "err").string();
        const int status = std::system(("{ " + command + "; }" + logs).c_str());
        return {WEXITSTATUS(status), Content(log_ / "out"), Content(log_ / "err")};
    }
    std::vector<std::uint32_t> Samples(const std::string& name) { return ReadGreyPng((folder_ / name).string()).samples; }
    std::vector<std::string> Files() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename());
        return names;
    }

    fs::path folder_, log_;
};

TEST_F(Program, MaskWritesTheCoverage) {
    ASSERT_EQ(Run("mask square.svg --size 4x3 -o m.png").err, "");
    EXPECT_EQ(Samples("m.png"), (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 255, 255, 0, 0, 255, 255, 0}));
    const auto one = [&](const std::string& options) {  // pixel (1, 1) moved to (0, 0), and what is beside the square
        EXPECT_EQ(Run("mask square.svg --size 3x1 -o m.png --transform 1,0,0,1,-1,-1 " + options).err, "");
        const std::vector<std::uint32_t> samples = Samples("m.png");
        return std::pair(samples.front(), samples.back());
    };
    EXPECT_EQ(one("--opacity 50"), std::pair(128U, 0U));
    EXPECT_EQ(one("--invert"), std::pair(0U, 255U));
    EXPECT_EQ(one("--depth 16"), std::pair(65535U, 0U));
    EXPECT_EQ(one("--depth 16 --opacity 25"), std::pair(16384U, 0U));  // 8192 * 65535 / 32768 = 16383.75
    EXPECT_EQ(one("--feather 0 --expand 0 --aspect 1 --quality draft --falloff linear --combine lighten"), std::pair(255U, 0U));
    Run("mask square.svg --size 3x1 -o m.png --transform -.5,0,0,2,2,-2");  // mirrored and squeezed: x from 0.5 to 1.5
    EXPECT_EQ(Samples("m.png"), (std::vector<std::uint32_t>{128, 128, 0}));
}

TEST_F(Program, MasksCombineInOrder) {
    Write("two.json", R"({"shapes": [
        {"vertices": [{"p": [0, 0]}, {"p": [2, 0]}, {"p": [2, 1]}, {"p": [0, 1]}]},
        {"vertices": [{"p": [1, 0]}, {"p": [3, 0]}, {"p": [3, 1]}, {"p": [1, 1]}]}]})");
    Write("cut.json",
          R"({"shapes": [{"vertices": [{"p": [1, 0]}, {"p": [3, 0]}, {"p": [3, 1]}, {"p": [1, 1]}], "mode": "subtract"},
        {"vertices": [{"p": [0, 0]}, {"p": [2, 0]}, {"p": [2, 1]}, {"p": [0, 1]}]}]})");
    const auto row = [&](const std::string& arguments) {
        EXPECT_EQ(Run("mask " + arguments + " --size 4x1 -o m.png").err, "");
        std::string text;
        for (const std::uint32_t sample : Samples("m.png")) text += sample == 255 ? '#' : sample == 0 ? '.' : '?';
        return text;
    };
    EXPECT_EQ(row("two.json"), "###.");
    EXPECT_EQ(row("two.json --combine lighten"), "###.");
    EXPECT_EQ(row("two.json --combine difference"), "#.#.");
    EXPECT_EQ(row("two.json --combine intersect"), ".#..");
    EXPECT_EQ(row("two.json --combine darken"), ".#..");
    EXPECT_EQ(row("two.json --combine subtract"), "...#");
    EXPECT_EQ(row("cut.json"), "##.#");  // a file's own mode wins; subtract starts from full
    EXPECT_EQ(row("cut.json --combine intersect"), "#...");
    Write("none.svg", "<svg/>");
    EXPECT_EQ(row("none.svg --invert"), "....");  // no shape, no mask
}

TEST_F(Program, StandardStreamsServeAsFiles) {
    EXPECT_EQ(Run("mask square.svg --size 4x3 -o m.png --touched").out, "1 1 3 3\n");
    EXPECT_EQ(Run("mask - --size 4x3 -o - < square.svg").out, Content(folder_ / "m.png"));
    const Outcome info = Run("info - < square.svg");
    EXPECT_THAT(info.out, HasSubstr("1   closed         4  1.00  1.00   3.00    3.00  4.00  clockwise     -\n"));
    EXPECT_THAT(info.out, HasSubstr("1 shapes: 1 closed, 0 open, 4 vertices\n"));
    EXPECT_THAT(Run("--version").out, StartsWith("vrl "));
    for (const char* command : {"", "mask ", "info "})
        EXPECT_THAT(Run(std::string(command) + "--help").out, HasSubstr("Examples:"));
}

TEST_F(Program, WrongUsageIsStatus2) {
    const std::string mask = "mask square.svg --size 4x3 -o m.png ";
    for (const std::string& arguments : {std::string(),
                                         std::string("bogus"),
                                         std::string("info"),
                                         std::string("mask square.svg -o m.png"),
                                         std::string("mask square.svg --size 4x3"),
                                         mask + "--size 0x3",
                                         mask + "--size 4x-3",
                                         mask + "--size 4",
                                         mask + "--size 40000x3",
                                         mask + "--size 4x3x2",
                                         mask + "--depth 12",
                                         mask + "--feather -1",
                                         mask + "--feather 1,2,3",
                                         mask + "--feather 1e9",
                                         mask + "--feather nan",
                                         mask + "--expand 2",
                                         mask + "--opacity 101",
                                         mask + "--opacity 1x",
                                         mask + "--aspect 0",
                                         mask + "--quality good",
                                         mask + "--falloff cubic",
                                         mask + "--transform 1,0,0,1,0",
                                         mask + "--transform 1,0,0,1,0,inf",
                                         mask + "--combine xor",
                                         mask + "extra",
                                         std::string("mask square.svg --size 4x3 -o - --touched")}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, MatchesRegex("vrl: [^\n]*\n")) << arguments;
        EXPECT_EQ(outcome.out, "") << arguments;
    }
    EXPECT_THAT(Run(mask + "--expand -3").err, HasSubstr("--expand: a distance other than 0 is not supported by this version"));
    EXPECT_EQ(Files().size(), 1U);
}

TEST_F(Program, FailedWorkIsStatus1AndLeavesNoFile) {
    Write("bad.svg", "<svg><path id='x' d='M0 0 L'/></svg>");
    Write("bad.json", "{\"shapes\": [\n\n");
    const struct {
        std::string arguments, expected;
    } cases[] = {
        {"mask bad.svg --size 4x3 -o m.png", "vrl: bad\\.svg: <path id=\"x\">: path data offset 6: [^\n]*\n"},
        {"mask bad.json --size 4x3 -o m.png", "vrl: bad\\.json: not valid JSON: [^\n]*\n"},
        {"mask none.svg --size 4x3 -o m.png", "vrl: none\\.svg: No such file or directory\n"},
        {"info .", "vrl: \\.: Is a directory\n"},
        {"info /dev/null", "vrl: /dev/null: the file is empty\n"},
        {"info - <&-", "vrl: standard input: Bad file descriptor\n"},
        {"info square.svg >/dev/full", "vrl: standard output: No space left on device\n"},
        {"info square.svg >&-", "vrl: standard output: Bad file descriptor\n"},
        {"mask square.svg --size 4x3 -o - >&-", "vrl: standard output: Bad file descriptor\n"},
        {"mask square.svg --size 4x3 -o /dev/full", "vrl: /dev/full: No space left on device\n"},
        {"mask square.svg --size 4x3 -o none/m.png", "vrl: none/m\\.png: No such file or directory\n"},
        {"mask square.svg --size 4x3 -o .", "vrl: \\.: Is a directory\n"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = Run(c.arguments);
        EXPECT_EQ(outcome.status, 1) << c.arguments;
        EXPECT_THAT(outcome.err, MatchesRegex(c.expected));
    }
    EXPECT_EQ(Files().size(), 3U);
    Run("mask square.svg --size 4x3 -o m.png 2>&-");  // the file must not get the number of standard error, or the reverse
    EXPECT_EQ(Samples("m.png").size(), 12U);
}

TEST_F(Program, OutputReplacesTheFileItself) {
    Write("real.png", "old");
    fs::permissions(folder_ / "real.png", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real.png", folder_ / "link.png");
    EXPECT_EQ(Run("mask square.svg --size 4x3 -o link.png").status, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.png"));
    EXPECT_EQ(fs::status(folder_ / "real.png").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Samples("real.png").size(), 12U);
}

// The work would take minutes; the signal comes once the output file is begun.
TEST_F(Program, CtrlCStopsTheWorkAndTidiesUp) {
    std::string svg = "<svg>";
    for (int i = 0; i < 10000; ++i) svg += "<circle cx='2000' cy='2000' r='1900'/>";
    Write("many.svg", svg + "</svg>");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal(SIGINT, SIG_DFL);
        if (chdir(folder_.c_str()) != 0) _exit(99);
        execl(VRL_TOOL_PATH, "vrl", "mask", "many.svg", "--size", "4000x4000", "--feather", "50", "-o", "m.png", nullptr);
        _exit(99);
    }
    const auto start = std::chrono::steady_clock::now();
    const auto waited = [&] { return std::chrono::steady_clock::now() - start; };
    while (Files().size() < 3 && waited() < std::chrono::seconds(60)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_EQ(Files().size(), 2U);
}

}  // namespace
}  // namespace vrltool
