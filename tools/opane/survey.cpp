#include "survey.h"

#include <algorithm>
#include <iomanip>
#include <iostream>

#include "run_on_link.h"
#include "shared/runtime_error.h"

namespace opane::tool {

Shown shownNumber(std::int32_t value) {
    return {value, std::to_string(value)};
}

Shown shownFlag(bool value) {
    return {value, value ? "on" : "off"};
}

void Survey::section(const std::string& pointer, const std::string& title) {
    pointer_ = pointer;
    rows_.push_back({title, "", true});
}

bool Survey::attempt(const std::string& what, const std::function<bool(clsOPane&)>& operation) {
    if (!stopped_) {
        try {
            if (operation(connection_.link()))
                return true;
            Report& report = connection_.report();
            report.fail(what + ": " + connection_.session().whyNot());
            stopped_ = !connection_.link().IsSynchronized();  // each further attempt would take long
            if (connection_.session().isCancelled())
                report.fail("the rest was not asked for");
            else if (stopped_)
                report.fail("the module has stopped answering; the rest was not asked for");
            stopped_ = stopped_ || connection_.session().isCancelled();
        } catch (const RuntimeError& error) {
            const bool aboutTheAnswer =
                error.number() == ErrorNumber::subscript || error.number() == ErrorNumber::overflow;
            if (aboutTheAnswer) {
                connection_.report().fail(what + ": " + error.what());
            } else {
                stopped_ = true;
                raised_ = std::current_exception();
            }
        }
    }
    whole_ = false;
    return false;
}

void Survey::add(const std::string& key, const std::string& label, const std::optional<Shown>& value) {
    connection_.report().values()[nlohmann::ordered_json::json_pointer(pointer_ + "/" + key)] =
        value ? value->json : nlohmann::ordered_json(nullptr);
    rows_.push_back({label, value ? value->text : "--", false});
}

ExitStatus Survey::show() const {
    if (!connection_.report().json()) {
        const bool hasTitles = std::any_of(rows_.begin(), rows_.end(), [](const Row& row) { return row.isTitle; });
        std::size_t width = 0;
        for (const Row& row : rows_)
            width = std::max(width, row.isTitle ? 0 : row.label.size());
        for (const Row& row : rows_) {
            if (row.isTitle)
                std::cout << row.label << '\n';
            else
                std::cout << (hasTitles ? "  " : "") << std::left << std::setw(static_cast<int>(width)) << row.label
                          << "  " << row.text << '\n';
        }
    }
    if (raised_)
        std::rethrow_exception(raised_);
    return whole_ ? kSuccess : kModuleFailed;
}

ExitStatus runSurvey(Session& session, const std::function<void(Survey&)>& fill) {
    return repeatOnModule(session, [&](Connection& connection) {
        Survey survey(connection);
        fill(survey);
        return survey.show();
    });
}

}  // namespace opane::tool
