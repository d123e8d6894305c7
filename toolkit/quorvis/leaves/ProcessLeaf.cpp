#include <re2/re2.h>

#include <algorithm>

#include "toolkit/quorvis/leaves/ValueTests.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

// The name that the query matches: that of the program, else the one that the process gave itself. None when it matches
// neither. So a script is found by its own name and not only by that of its interpreter.
std::optional<std::string_view> matchingName(const Query& query, const Process& process) {
    if (isOrAny(query, Attribute::Name, process.name())) return process.name();
    if (isOrAny(query, Attribute::Name, process.comm)) return process.comm;
    return std::nullopt;
}

bool isUser(const Query& query, const Process& process) {
    return isOrAny(query, Attribute::User, process.user) ||
           isOrAny(query, Attribute::User, std::to_string(process.uid));
}

Item itemOf(const Query& query, const Process& process, std::string_view name) {
    Item item;
    item.source = "/proc/" + std::to_string(process.pid);
    item.set("pid", std::to_string(process.pid));
    item.set("name", std::string(name));
    if (!process.exe.empty()) item.set("exe", process.exe);
    item.set("user", process.user);
    const auto isOfArguments = [](const Capture& capture) { return capture.of == kArguments; };
    if (std::ranges::any_of(query.captures(), isOfArguments)) item.set(kArguments, process.args);
    return item;
}

}  // namespace

LeafResult lookUpProcess(const Query& query, EvaluationContext& context) {
    LeafResult result;
    std::string problem;
    const RE2* const regex = compileRegex(query.get(Attribute::ArgsRegex), {}, problem);
    if (regex == nullptr) {
        result.fail(EventCode::Unsupported, {}, "wrong expression: " + problem);
        return result;
    }
    std::size_t denied = 0;
    for (const Process& process : context.processes().processes()) {
        context.budget().checkTimeOccasionally();
        const std::optional<std::string_view> name = matchingName(query, process);
        const bool passes = isUser(query, process) && RE2::PartialMatch(process.args, *regex);
        if (passes && name && process.exeDenied && query.has(Attribute::Exe)) ++denied;
        if (!passes || !name || !isOrAny(query, Attribute::Exe, process.exe)) continue;
        keepItem(context.budget(), result, itemOf(query, process, *name));
    }
    if (denied > 0) {
        result.fail(EventCode::Permission, "/proc",
                    "the programs of " + std::to_string(denied) + " processes may not be seen");
    }
    const Processes& processes = context.processes();
    result.events.insert(result.events.end(), processes.events().begin(), processes.events().end());
    result.incomplete = result.incomplete || processes.incomplete();
    return result;
}

}  // namespace toolkit::quorvis
