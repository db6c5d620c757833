#include <gtest/gtest.h>

#include <regex>

#include "support/program.h"

// The page of the program's commands keeps its word: each example runs, and no command is left out.

namespace opane::test {
namespace {

std::vector<std::string> examples() {
    const std::string page = contentOf(OPANE_SOURCE "/docs/opane.md");
    const std::regex row(R"(\n\| `opane ([^`]*)` \|)");
    std::vector<std::string> found;
    for (std::sregex_iterator at(page.begin(), page.end(), row), end; at != end; ++at)
        found.push_back((*at)[1]);
    return found;
}

TEST(DocumentedExamples, AllRunInOrder) {
    const TemporaryFolder folder;
    std::string bitmap(62 + 64 * 16, '\0');
    // Signature, sizes, pixel offset, header size, width, height, planes, bits a pixel; black, then white.
    for (const auto& [offset, value] : std::initializer_list<std::pair<std::size_t, int>>{{0, 'B'},
                                                                                          {1, 'M'},
                                                                                          {2, 0x3E},
                                                                                          {3, 0x04},
                                                                                          {10, 62},
                                                                                          {14, 40},
                                                                                          {18, 120},
                                                                                          {22, 64},
                                                                                          {26, 1},
                                                                                          {28, 1},
                                                                                          {58, 0xFF},
                                                                                          {59, 0xFF},
                                                                                          {60, 0xFF}})
        bitmap[offset] = static_cast<char>(value);
    folder.write("picture.bmp", bitmap);
    setenv("OPANE_COMPONENT_REGISTRY", (folder / "components").c_str(), 1);
    RunningProgram module({OPANE_SIM_PROGRAM, "--link", folder / "module"});
    module.line();
    const auto all = examples();
    EXPECT_GE(all.size(), 20U);
    for (const std::string& example : all) {
        const ProgramEnd end =
            runProgram({"sh", "-c",
                        "cd " + quoted(folder.path()) + " && OPANE_COM1=" + quoted(folder / "module") + " " +
                            quoted(OPANE_PROGRAM) + " " + example});
        EXPECT_EQ(end.status, 0) << example << "\n" << end.errors;
    }
}

TEST(DocumentedExamples, NameEveryCommand) {
    const std::string help = runProgram({OPANE_PROGRAM, "--help"}).output;
    const std::regex row(R"(\n  ([a-z-]+) +[A-Z])");
    std::string shown;
    for (const std::string& example : examples())
        shown.append(" ").append(example).append(" ");
    int commands = 0;
    const auto list = help.substr(help.find("Subcommands:"));
    for (std::sregex_iterator at(list.begin(), list.end(), row), end; at != end; ++at, ++commands)
        EXPECT_NE(shown.find(std::string(" ").append((*at)[1]).append(" ")), std::string::npos) << (*at)[1];
    EXPECT_GE(commands, 15);
}

}  // namespace
}  // namespace opane::test
