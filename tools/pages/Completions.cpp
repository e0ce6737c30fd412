#include "tools/pages/Completions.h"

#include <cctype>
#include <string_view>

namespace ZEMA {

namespace {

// What a shell offers in the place of a value.
enum class Offer { Nothing, Words, Files, Folders };

Offer OfferFor(const OptionDescription& option) {
    if (option.value.empty()) return Offer::Nothing;
    if (std::islower(static_cast<unsigned char>(option.value[0])) != 0) return Offer::Words;
    if (option.value == "FILE" || option.value == "PATH") return Offer::Files;
    return option.value == "DIR" || option.value == "FOLDER" ? Offer::Folders : Offer::Nothing;
}

std::string WordsOf(const OptionDescription& option) {
    std::string words = option.value;
    for (char& unit : words) unit = unit == '|' ? ' ' : unit;
    return words;
}

std::string Joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string text;
    for (const std::string& word : words) text.append(text.empty() ? "" : separator).append(word);
    return text;
}

// With a backslash in front of each of the units.
std::string Escaped(std::string_view text, std::string_view units) {
    std::string escaped;
    for (const char unit : text) {
        if (units.find(unit) != std::string_view::npos) escaped += '\\';
        escaped += unit;
    }
    return escaped;
}

// In quotes, as all three shells read it; fish has the backslash as an escape there, and our texts have none.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char unit : text) quoted += unit == '\'' ? "'\\''" : std::string(1, unit);
    return quoted + "'";
}

std::string NamesOf(const std::vector<CommandDescription>& commands) {
    std::vector<std::string> names;
    for (const CommandDescription& command : commands) names.push_back(command.name);
    return Joined(names, " ");
}

// What the bash script's own words mean: it sets `offer` to one of these, or to words.
std::string BashOffer(const OptionDescription& option) {
    switch (OfferFor(option)) {
        case Offer::Files:
            return "@files";
        case Offer::Folders:
            return "@folders";
        case Offer::Words:
            return WordsOf(option);
        case Offer::Nothing:
            break;
    }
    return "";
}

}  // namespace

std::string BashCompletion(const std::vector<CommandDescription>& commands) {
    std::string cases;
    for (const CommandDescription& command : commands) {
        std::string values, names, rest;
        for (const OptionDescription& option : command.options) {
            if (option.names.empty()) {
                rest = BashOffer(option);
                continue;
            }
            names += (names.empty() ? "" : " ") + Joined(option.names, " ");
            if (option.value.empty()) continue;
            values += "                " + Joined(option.names, "|") + ") offer=" + Quoted(BashOffer(option)) + " ;;\n";
        }
        cases += "        " + command.name + ")\n            options=" + Quoted(names) +
                 "\n            case $previous in\n" + values + "                *) offer=" + Quoted(rest) +
                 " rest=1 ;;\n            esac\n            ;;\n";
    }
    const std::string names = NamesOf(commands);
    return R"(# Completes the command lines of wqf in bash.

_wqf() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} options= offer= rest=
    # "--option=value" comes as three words.
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD-2]}
    fi
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W ')" +
           names + R"( help --help --version' -- "$current")
        return
    fi
    case ${COMP_WORDS[1]} in
        help) offer=')" +
           names + R"(' ;;
)" + cases +
           R"(    esac
    if [[ $rest && $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $offer in
        @files) compopt -o default ;;
        @folders) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current") ;;
        *) mapfile -t COMPREPLY < <(compgen -W "$offer" -- "$current") ;;
    esac
}

complete -F _wqf wqf
)";
}

namespace {

// The last part of a description for _arguments, ":KIND:ACTION".
std::string ZshValue(const OptionDescription& option) {
    const Offer offer = OfferFor(option);
    const std::string kind = offer == Offer::Words ? "WORD" : option.value;
    return ":" + kind + ":" +
           (offer == Offer::Files     ? "_files"
            : offer == Offer::Folders ? "_files -/"
            : offer == Offer::Words   ? "(" + WordsOf(option) + ")"
                                      : "");
}

std::string ZshSpecification(const OptionDescription& option) {
    if (option.names.empty()) return Quoted((option.repeats ? "*" : "1") + ZshValue(option));
    const std::string help = "[" + Escaped(option.help, "[]:\\") + "]";
    const std::string names = option.names.size() == 1 ? option.names[0] : "{" + Joined(option.names, ",") + "}";
    const std::string excluded = option.repeats ? "*" : "(" + Joined(option.names, " ") + ")";
    const std::string value = option.value.empty() ? "" : ZshValue(option);
    return Quoted(excluded) + names + (option.value.empty() ? "" : "=") + Quoted(help + value);
}

}  // namespace

std::string ZshCompletion(const std::vector<CommandDescription>& commands) {
    std::string summaries, cases;
    for (const CommandDescription& command : commands) {
        summaries += "        " + Quoted(command.name + ":" + Escaped(command.summary, ":\\")) + "\n";
        cases += "        " + command.name + ")\n            _arguments -S";
        for (const OptionDescription& option : command.options) {
            cases += " \\\n                " + ZshSpecification(option);
        }
        cases += "\n            ;;\n";
    }
    return R"(#compdef wqf
# Completes the command lines of wqf in zsh.

_wqf() {
    local -a commands
    commands=(
)" + summaries +
           R"(        'help:Tell the options of a command'
    )
    if ((CURRENT == 2)); then
        _describe command commands
        return
    fi
    shift words
    ((CURRENT--))
    case $words[1] in
        help) _describe command commands ;;
)" + cases +
           R"(    esac
}

_wqf "$@"
)";
}

std::string FishCompletion(const std::vector<CommandDescription>& commands) {
    const std::string names = NamesOf(commands);
    std::string text = "# Completes the command lines of wqf in fish.\n\ncomplete -c wqf -f\n";
    for (const CommandDescription& command : commands) {
        text += "complete -c wqf -n __fish_use_subcommand -a " + command.name + " -d " + Quoted(command.summary) + "\n";
    }
    text += "complete -c wqf -n __fish_use_subcommand -a help -d 'Tell the options of a command'\n";
    text += "complete -c wqf -n __fish_use_subcommand -l help -d 'Name the commands'\n";
    text += "complete -c wqf -n __fish_use_subcommand -l version -d 'Tell the version'\n";
    text += "complete -c wqf -n 'test (count (commandline -opc)) -eq 2; and __fish_seen_subcommand_from help' -a " +
            Quoted(names) + "\n";
    for (const CommandDescription& command : commands) {
        const std::string line =
            "complete -c wqf -n 'test (count (commandline -opc)) -gt 1; and test (commandline -opc)[2] = " +
            command.name + "'";
        for (const OptionDescription& option : command.options) {
            text += line;
            for (const std::string& name : option.names) {
                text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            const Offer offer = OfferFor(option);
            if (!option.names.empty() && !option.value.empty()) text += offer == Offer::Files ? " -r" : " -x";
            if (offer == Offer::Files) text += " -F";
            if (offer == Offer::Folders) text += " -a '(__fish_complete_directories)'";
            if (offer == Offer::Words) text += " -a " + Quoted(WordsOf(option));
            text += " -d " + Quoted(option.help) + "\n";
        }
    }
    return text;
}

}  // namespace ZEMA
