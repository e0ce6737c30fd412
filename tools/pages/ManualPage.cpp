#include "tools/pages/ManualPage.h"

#include <algorithm>

namespace ZEMA {

namespace {

// As text that means nothing to scdoc.
std::string Plain(std::string_view text) {
    std::string plain;
    for (const char unit : text) {
        if (std::string_view("\\*_`~#[|<").find(unit) != std::string_view::npos) plain += '\\';
        plain += unit;
    }
    return plain;
}

std::string Emphasised(std::string_view text) {
    return "_" + Plain(text) + "_";
}

std::string Strong(std::string_view text) {
    return "*" + Plain(text) + "*";
}

bool IsOption(const OptionDescription& option) {
    return !option.names.empty();
}

std::string SynopsisOf(const CommandDescription& command) {
    std::string synopsis = Strong("wqf " + command.name) + " \\[_OPTIONS_]";
    for (const OptionDescription& option : command.options) {
        if (!IsOption(option)) synopsis += " " + Emphasised(option.value) + (option.repeats ? "..." : "");
    }
    return synopsis;
}

std::string EntryOf(const OptionDescription& option) {
    std::string names;
    for (const std::string& name : option.names) names += (names.empty() ? "" : ", ") + Strong(name);
    if (!option.value.empty()) names += (names.empty() ? "" : " ") + Emphasised(option.value);
    return names + "\n\t" + Plain(option.help) + ".\n\n";
}

std::string OptionsOf(const CommandDescription& command) {
    std::string entries;
    for (const OptionDescription& option : command.options) {
        if (!IsOption(option)) entries += EntryOf(option);
    }
    for (const OptionDescription& option : command.options) {
        if (IsOption(option)) entries += EntryOf(option);
    }
    return "# OPTIONS\n\n" + entries;
}

constexpr std::string_view kSeeAlso = "# SEE ALSO\n\n";

}  // namespace

std::string ProgramPage(const std::vector<CommandDescription>& commands, std::string_view text) {
    std::string page =
        "wqf(1)\n\n# NAME\n\nwqf - look into brick-model documents\n\n# SYNOPSIS\n\n"
        "*wqf* _COMMAND_ \\[_OPTIONS_] ...++\n*wqf help* \\[_COMMAND_]++\n*wqf --version*\n\n# COMMANDS\n\n";
    std::string pages;
    for (const CommandDescription& command : commands) {
        page += Strong(command.name) + "\n\t" + Plain(command.summary) + "; see *wqf-" + command.name + "*(1).\n\n";
        pages += (pages.empty() ? "*wqf-" : ", *wqf-") + command.name + "*(1)";
    }
    return page.append(text).append("\n").append(kSeeAlso).append(pages) + "\n";
}

std::string CommandPage(const CommandDescription& command, std::string_view text) {
    const std::size_t heading = std::min(text.starts_with("# ") ? 0 : text.find("\n# "), text.size());
    std::string page = "wqf-" + command.name + "(1)\n\n# NAME\n\nwqf-" + command.name + " - " + Plain(command.summary) +
                       "\n\n# SYNOPSIS\n\n" + SynopsisOf(command) + "\n\n# DESCRIPTION\n\n";
    page.append(text.substr(0, heading)).append("\n");
    if (!command.more.empty()) page += Plain(command.more) + "\n\n";
    page += OptionsOf(command);
    page.append(text.substr(heading)).append("\n");
    return page.append(kSeeAlso) + "*wqf*(1)\n";
}

}  // namespace ZEMA
