#include "support/opane_program.h"

// The page of the program's commands keeps its word: each example runs, and no command is left out.

namespace opane::test {
namespace {

TEST_F(OpaneCommands, OfThePageRunInOrderAndNoneIsLeftOut) {
    folder.write("picture.bmp", bitmap(120, 64));
    std::string shown;
    for (const std::string& example :
         captures(contentOf(OPANE_SOURCE "/docs/opane.md"), R"(\n\| `opane ([^`]*)` \|)")) {
        const ProgramEnd end = runProgram({"env", "OPANE_COM1=" + module.devicePath(),
                                           "OPANE_COMPONENT_REGISTRY=" + (folder / "components"), "sh", "-c",
                                           "cd \"$0\" && '" OPANE_PROGRAM "' " + example, folder.path()});
        EXPECT_EQ(end.status, 0) << example << "\n" << end.errors;
        shown.append(" ").append(example).append(" ");
    }
    const std::string help = runProgram({OPANE_PROGRAM, "--help"}).output;
    const Words commands = captures(help.substr(help.find("Subcommands:")), R"(\n  ([a-z-]+) +[A-Z])");
    EXPECT_GE(commands.size(), 15U);
    for (const std::string& command : commands)
        EXPECT_PRED2(holds, shown, std::string(" ").append(command).append(" "));
}

}  // namespace
}  // namespace opane::test
