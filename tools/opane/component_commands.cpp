#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <system_error>

#include "automation/component/boundary.h"
#include "automation/component/shared_library.h"
#include "platform/folders.h"
#include "platform/utf8_path.h"
#include "run_on_link.h"
#include "subcommands.h"

namespace opane::tool {
namespace {

/// The component beside this program, or where it is installed.
std::string defaultComponent() {
    const std::filesystem::path own = utf8Path(libraryFolder());
    std::error_code ignored;
    for (const std::filesystem::path& folder : {own, own / OPANE_LIBRARY_FOLDER}) {
        const std::filesystem::path file = folder / OPANE_COMPONENT_NAME;
        if (std::filesystem::exists(file, ignored))
            return utf8Name(file.lexically_normal());
    }
    throw InputError("there is no " OPANE_COMPONENT_NAME " beside this program or in " OPANE_LIBRARY_FOLDER
                     "; name its file");
}

/// Calls an entry point of the component without arguments, as the system's own registration program does.
void callEntry(const std::string& file, const char* entry) {
    using Entry = HRESULT STDMETHODCALLTYPE();
    const SharedLibrary library(file);
    auto* const function = library.function<Entry>(entry);
    if (function == nullptr)
        throw InputError("\"" + file + "\" is no component: it exports no " + entry);
    if (const HRESULT result = function(); FAILED(result))
        throw std::runtime_error(component::takeErrorText("the component gives no explanation")
                                     .append(", result ")
                                     .append(hexText(static_cast<std::uint32_t>(result), 8)));
}

Run setUpEntry(CLI::App& command, const char* entry, const char* done) {
    const auto file = std::make_shared<std::string>();
    command.add_option("FILE", *file, "the component; by default the one that comes with this program");
    return [file, entry, done](Session& session) {
        const std::string component = file->empty() ? defaultComponent() : *file;
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(utf8Path(component), ignored))
            throw InputError("there is no file \"" + component + "\"");
        return repeatRuns(session, [&] {
            callEntry(utf8Name(std::filesystem::absolute(utf8Path(component))), entry);
            if (session.report().json())
                session.report().values()[done] = component;
            else
                std::cout << done << ' ' << component << '\n';
            return kSuccess;
        });
    };
}

}  // namespace

Run setUpRegister(CLI::App& command) {
    return setUpEntry(command, "DllRegisterServer", "registered");
}

Run setUpUnregister(CLI::App& command) {
    return setUpEntry(command, "DllUnregisterServer", "unregistered");
}

}  // namespace opane::tool
