// All options of all commands; the only place that knows the option parser.

#include "tools/wqf/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "host/system/Output.h"
#include "tools/wqf/DesktopCommands.h"
#include "tools/wqf/DocumentCommands.h"
#include "tools/wqf/ExitStatus.h"
#include "tools/wqf/IndexCommands.h"
#include "tools/wqf/StorageCommands.h"

namespace ZEMA {

namespace {

using Action = std::function<int()>;

// One command: `declare` enters its options in the parser and returns what is to be done once they are read.
struct Command {
    const char* name;
    const char* summary;
    Action (*declare)(CLI::App& parser);
};

// The parser gives some values a meaning of its own ("++", "{}", "[a]", the empty text), but a file may have any name.
// So whatever is no option goes through it with a zero byte in front, which no argument of a program can hold.
std::vector<std::string> Shielded(std::vector<std::string> arguments) {
    bool onlyValues = false;
    for (std::string& argument : arguments) {
        if (!onlyValues && argument == "--") {
            onlyValues = true;
        } else if (onlyValues || !argument.starts_with("-")) {
            argument.insert(0, 1, '\0');
        }
    }
    return arguments;
}

std::string Bared(const std::string& value) {
    return value.starts_with('\0') ? value.substr(1) : value;
}

int WrongUse(const std::string& command, const std::string& problem) {
    PrintMessage(problem);
    PrintMessage("try 'wqf" + (command.empty() ? "" : " " + command) + " --help'");
    return kExitWrongUse;
}

// In a message of the parser.
std::string WithoutShields(std::string message) {
    std::erase(message, '\0');
    return message;
}

void AddText(CLI::App& parser, const std::string& name, std::string& text, const char* kind, const std::string& help) {
    const auto set = [&text](const std::string& value) { text = Bared(value); };
    parser.add_option_function<std::string>(name, set, help)->type_name(kind);
}

void AddFlag(CLI::App& parser, const std::string& names, bool& flag, const std::string& help) {
    parser.add_flag_callback(
        names, [&flag] { flag = true; }, help);
}

void AddTexts(CLI::App& parser, const std::string& name, std::vector<std::string>& texts, const char* kind,
              const std::string& help) {
    const auto add = [&texts](const std::vector<std::string>& values) {
        std::transform(values.begin(), values.end(), std::back_inserter(texts), Bared);
    };
    parser.add_option_function<std::vector<std::string>>(name, add, help)->type_name(kind)->expected(1)->take_all();
}

void AddPaths(CLI::App& parser, std::vector<std::string>& paths, const std::string& help, const char* kind = "PATH") {
    const auto set = [&paths](const std::vector<std::string>& values) {
        std::transform(values.begin(), values.end(), std::back_inserter(paths), Bared);
    };
    parser.add_option_function<std::vector<std::string>>(kind, set, help)->type_name("");
}

// One of several names; the first is what is meant unless told otherwise. They stand where others have the kind of
// their value.
template <class Choice>
void AddChoice(CLI::App& parser, const std::string& name, Choice& choice,
               const std::vector<std::pair<std::string, Choice>>& names, const std::string& help) {
    std::string kind, choices;
    for (const auto& [word, value] : names) {
        kind += (kind.empty() ? "" : "|") + word;
        choices += (choices.empty() ? "" : ", ") + word;
    }
    const auto find = [names](const std::string& wanted) {
        const auto named = [&](const auto& item) { return item.first == Bared(wanted); };
        const auto found = std::find_if(names.begin(), names.end(), named);
        return found == names.end() ? std::nullopt : std::optional<Choice>(found->second);
    };
    const auto set = [&choice, find](const std::string& word) { choice = *find(word); };
    const auto check = [find, choices](const std::string& word) {
        return find(word) ? std::string() : "'" + Bared(word) + "' is none of " + choices;
    };
    choice = names.front().second;
    parser.add_option_function<std::string>(name, set, help)->type_name(kind)->check(check);
}

template <class Format>
void AddFormat(CLI::App& parser, Format& format, const std::vector<std::pair<std::string, Format>>& names) {
    AddChoice(parser, "--format", format, names, "How to print");
}

void AddDocumentPaths(CLI::App& parser, DocumentPaths& documents, const std::string& help) {
    AddText(parser, "--files0-from", documents.files0From, "FILE",
            "Read the paths from FILE ('-': standard input), with a zero byte between each two");
    AddPaths(parser, documents.paths, help);
}

// A whole number of what `unit` says, and 0 where it makes sense.
template <class Number>
void AddNumber(CLI::App& parser, const std::string& name, Number least, const char* kind, const std::string& help,
               const std::function<void(Number)>& set) {
    const auto parse = [least](const std::string& text) {
        Number number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool whole = error == std::errc() && end == text.data() + text.size() && number >= least;
        return whole ? std::optional<Number>(number) : std::nullopt;
    };
    const auto check = [parse](const std::string& text) {
        return parse(Bared(text)) ? std::string() : "'" + Bared(text) + "' is no such number";
    };
    parser
        .add_option_function<std::string>(
            name, [parse, set](const std::string& text) { set(*parse(Bared(text))); }, help)
        ->type_name(kind)
        ->check(check);
}

void AddRunOptions(CLI::App& parser, RunOptions& options) {
    AddNumber<std::uint16_t>(parser, "--jobs", 1, "N", "How many documents to read at once (default: the processors)",
                             [&options](std::uint16_t jobs) { options.workers.jobs = jobs; });
    AddNumber<std::uint32_t>(
        parser, "--timeout", 0, "SECONDS", "How long to try a document (default: 60; 0: for ever)",
        [&options](std::uint32_t seconds) { options.workers.timeout = std::chrono::seconds(seconds); });
    AddNumber<std::uint32_t>(parser, "--memory-limit", 1, "MIB", "What a document may take (default: 2048)",
                             [&options](std::uint32_t size) { options.workers.memory = std::uint64_t{size} << 20; });
    AddFlag(parser, "-q,--quiet", options.quiet, "Neither progress nor, for folders, sums");
    AddFlag(parser, "--verbose", options.verbose, "Tell where documents could not be read as guarded as they should");
}

int WithDocuments(const char* command, const DocumentPaths& documents, const Action& run) {
    if (documents.paths.empty() != documents.files0From.empty()) return run();
    return WrongUse(command,
                    documents.paths.empty() ? "no PATH is given" : "--files0-from and PATHs exclude each other");
}

std::optional<std::uint32_t> ParseOptionBits(const std::string& text) {
    std::uint32_t bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(bits) : std::nullopt;
}

void AddLoaderOptions(CLI::App& parser, std::uint32_t& bits) {
    const auto set = [&bits](const std::string& text) { bits = *ParseOptionBits(Bared(text)); };
    const auto check = [](const std::string& text) {
        return ParseOptionBits(Bared(text)) ? std::string() : "'" + Bared(text) + "' is no number of 32 bits";
    };
    parser
        .add_option_function<std::string>("--options", set,
                                          "The sum of: 1 to pass over joints, 2 to allow unknown cameras in "
                                          "instructions (both in format 4 only; default: 1)")
        ->type_name("N")
        ->check(check);
}

Action DeclareImport(CLI::App& parser) {
    const auto options = std::make_shared<ImportOptions>();
    AddFormat<RecordFormat>(parser, options->format,
                            {{"text", RecordFormat::Text},
                             {"json", RecordFormat::Json},
                             {"ndjson", RecordFormat::Ndjson},
                             {"plist", RecordFormat::PropertyList},
                             {"csv", RecordFormat::Csv},
                             {"paths", RecordFormat::Paths}});
    const auto isRaw = std::make_shared<bool>(false);
    const auto zeroBytes = std::make_shared<bool>(false);
    AddText(parser, "--where", options->where, "QUERY", "Print only what the query finds (see 'wqf help search')");
    AddTexts(parser, "--name", options->names, "ATTR", "Print only this attribute; may be given several times");
    AddFlag(parser, "--raw", *isRaw, "Print the texts and numbers of the attributes alone, one a line");
    AddFlag(parser, "-0", *zeroBytes, "Print paths, or with --raw values, with a zero byte behind each");
    AddFlag(parser, "--repair", options->repair, "Read also what only 'wqf mend' would make readable");
    AddText(parser, "--bundle", options->bundle, "DIR", "The plug-in bundle, where it is not beside the program");
    AddRunOptions(parser, options->run);
    AddDocumentPaths(parser, options->documents,
                     "Documents, also in archives, or folders to search for *.wqf and *.wqfml");
    return [options, isRaw, zeroBytes] {
        const bool isOther = options->format != RecordFormat::Text;
        if (isOther && (*isRaw || (*zeroBytes && options->format != RecordFormat::Paths)))
            return WrongUse("import", "--raw and -0 go with no other --format");
        if (*isRaw) options->format = *zeroBytes ? RecordFormat::RawWithZeroBytes : RecordFormat::Raw;
        if (*zeroBytes && !*isRaw) options->format = RecordFormat::PathsWithZeroBytes;
        return WithDocuments("import", options->documents, [&] { return RunImport(*options); });
    };
}

void AddIndex(CLI::App& parser, std::string& index) {
    AddText(parser, "--index", index, "FILE", "The index (default: wqf/index.db in $XDG_DATA_HOME or ~/.local/share)");
}

Action DeclareIndex(CLI::App& parser) {
    const auto options = std::make_shared<IndexOptions>();
    parser.footer(
        "Only what is new or changed is read. A document whose folder is away stays in the index, marked so,\n"
        "until its folder is forgotten.");
    AddIndex(parser, options->index);
    AddText(parser, "--bundle", options->bundle, "DIR", "The plug-in bundle, where it is not beside the program");
    AddFlag(parser, "--forget", options->forget,
            "Remove what lies below the folders, and all its texts, from the index");
    AddFlag(parser, "--rebuild", options->rebuild, "Set the index aside, even a damaged one, and build it anew");
    AddRunOptions(parser, options->run);
    AddPaths(parser, options->folders, "Folders to search for *.wqf and *.wqfml (default: those of earlier runs)");
    return [options] {
        if (options->forget && options->folders.empty()) return WrongUse("index", "no PATH is given to forget");
        if (options->forget && options->rebuild) return WrongUse("index", "--forget and --rebuild exclude each other");
        return RunIndex(*options);
    };
}

constexpr const char* kQueryHelp =
    "A query: words, \"phrases\" and beginnings (castle*), all of which must occur, in any text or in one field\n"
    "(author:, creator:, keyword:, description:, brick:); bricks:100.., bricks:..50, bricks:10..50, lang:de,\n"
    "version:4, path:models/, is:failed, is:away, is:repaired; OR, NOT and parentheses. In quotes for the shell:\n"
    "wqf search 'author:lovelace (tower OR gate*) NOT bricks:1000..'";

Action DeclareSearch(CLI::App& parser) {
    const auto options = std::make_shared<SearchOptions>();
    const auto words = std::make_shared<std::vector<std::string>>();
    parser.footer(kQueryHelp);
    AddIndex(parser, options->index);
    AddFormat<RecordFormat>(parser, options->format,
                            {{"text", RecordFormat::Text},
                             {"json", RecordFormat::Json},
                             {"ndjson", RecordFormat::Ndjson},
                             {"csv", RecordFormat::Csv},
                             {"paths", RecordFormat::Paths}});
    const auto zeroBytes = std::make_shared<bool>(false);
    AddFlag(parser, "-0", *zeroBytes, "Print paths with a zero byte behind each");
    AddFlag(parser, "--count", options->count, "Print only how many documents are found");
    AddChoice<HitOrder>(parser, "--sort", options->order,
                        {{"relevance", HitOrder::Relevance},
                         {"bricks", HitOrder::Bricks},
                         {"name", HitOrder::Name},
                         {"time", HitOrder::Time}},
                        "The best match first, or the most bricks, or by the names of the files, or the newest");
    AddNumber<std::size_t>(parser, "--limit", 0, "N", "How many to print at most (default: 50 as text, else all)",
                           [options](std::size_t limit) { options->limit = limit; });
    AddPaths(parser, *words, "A query, its parts joined by blanks", "QUERY");
    return [options, words, zeroBytes] {
        for (const std::string& word : *words) options->query += (options->query.empty() ? "" : " ") + word;
        if (*zeroBytes && options->format != RecordFormat::Text && options->format != RecordFormat::Paths)
            return WrongUse("search", "-0 goes with no other --format");
        if (*zeroBytes) options->format = RecordFormat::PathsWithZeroBytes;
        return words->empty() ? WrongUse("search", "no QUERY is given") : RunSearch(*options);
    };
}

Action DeclareCheck(CLI::App& parser) {
    const auto options = std::make_shared<CheckOptions>();
    AddLoaderOptions(parser, options->loaderOptions);
    AddFormat<RecordFormat>(
        parser, options->format,
        {{"text", RecordFormat::Text}, {"json", RecordFormat::Json}, {"ndjson", RecordFormat::Ndjson}});
    AddRunOptions(parser, options->run);
    AddDocumentPaths(parser, options->documents,
                     "Documents, also in archives, or folders to search for *.wqf and *.wqfml");
    return [options] { return WithDocuments("check", options->documents, [&] { return RunCheck(*options); }); };
}

Action DeclareScene(CLI::App& parser) {
    const auto options = std::make_shared<SceneOptions>();
    const auto paths = std::make_shared<std::vector<std::string>>();
    AddLoaderOptions(parser, options->loaderOptions);
    AddPaths(parser, *paths, "A document, also in an archive");
    return [options, paths] {
        if (paths->size() != 1)
            return WrongUse("scene", paths->empty() ? "no PATH is given" : "only one PATH is taken");
        options->path = paths->front();
        return RunScene(*options);
    };
}

Action DeclareCatalogue(CLI::App&) {
    return RunCatalogue;
}

constexpr const char* kInside =
    "An archive, which is known by its contents, is a folder wherever something follows its name, as in\n"
    "model.wqf/textures/a.png; names inside are found without regard to case.";

Action DeclareLs(CLI::App& parser) {
    const auto options = std::make_shared<ListOptions>();
    parser.footer(kInside);
    AddFlag(parser, "-l", options->columns, "Flags, size and time too; '-' for a time that is not known");
    AddFlag(parser, "-R,--recursive", options->recursive, "Folders in folders too, but not archives");
    AddFormat<ListingFormat>(
        parser, options->format,
        {{"text", ListingFormat::Text}, {"json", ListingFormat::Json}, {"ndjson", ListingFormat::Ndjson}});
    AddPaths(parser, options->paths, "Folders, archives, or files; '*' in a last component matches names");
    return [options] { return options->paths.empty() ? WrongUse("ls", "no PATH is given") : RunLs(*options); };
}

Action DeclareCat(CLI::App& parser) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(kInside);
    AddPaths(parser, *paths, "Files");
    return [paths] { return paths->empty() ? WrongUse("cat", "no PATH is given") : RunCat(*paths); };
}

template <auto run>
Action DeclareTransfer(CLI::App& parser, const char* command, bool mayLeaveFolders) {
    const auto options = std::make_shared<CopyOptions>();
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(kInside);
    if (mayLeaveFolders) AddFlag(parser, "-r,--recursive", options->recursive, "Folders with all that lies in them");
    AddFlag(parser, "-f,--force", options->force,
            "Over write-protected files, and in archives that are write-protected or have several names, too");
    AddFlag(parser, "-n,--no-clobber", options->keepExisting, "Leave files that are there as they are");
    AddPaths(parser, *paths,
             "Sources, and the target behind them; sources or target lie in archives. An archive as the target is a "
             "folder, and one that is a source a file unless '/' follows its name");
    return [options, paths, command] {
        if (paths->size() >= 2) return run(*options, *paths);
        return WrongUse(command, paths->empty() ? "no SOURCE is given" : "no TARGET is given");
    };
}

Action DeclareCp(CLI::App& parser) {
    return DeclareTransfer<&RunCp>(parser, "cp", true);
}

Action DeclareMv(CLI::App& parser) {
    return DeclareTransfer<&RunMv>(parser, "mv", false);
}

Action DeclareRm(CLI::App& parser) {
    const auto options = std::make_shared<RemoveOptions>();
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(kInside);
    AddFlag(parser, "-r,--recursive", options->recursive, "Folders with all that lies in them");
    AddFlag(parser, "-f,--force", options->force, "What is write-protected too; what is missing is no failure");
    AddPaths(parser, *paths, "Files and folders in archives");
    return [options, paths] { return paths->empty() ? WrongUse("rm", "no PATH is given") : RunRm(*options, *paths); };
}

Action DeclareMkdir(CLI::App& parser) {
    const auto options = std::make_shared<MakeOptions>();
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(kInside);
    AddFlag(parser, "-f,--force", options->force, "In archives that are write-protected or have several names too");
    AddFlag(parser, "-p,--parents", options->parents, "Missing folders on the way too; a folder that is there is fine");
    AddPaths(parser, *paths, "Folders to make in archives");
    return [options, paths] {
        return paths->empty() ? WrongUse("mkdir", "no PATH is given") : RunMkdir(*options, *paths);
    };
}

Action DeclareNew(CLI::App& parser) {
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(
        "An archive is known by its contents, so it may have any name. It is made outside of other archives;\n"
        "'wqf cp' puts it into one.");
    AddPaths(parser, *paths, "Archives to make, where nothing is yet");
    return [paths] { return paths->empty() ? WrongUse("new", "no ARCHIVE is given") : RunNew(*paths); };
}

Action DeclareMend(CLI::App& parser) {
    const auto options = std::make_shared<MendOptions>();
    const auto paths = std::make_shared<std::vector<std::string>>();
    parser.footer(
        "Archives of some programs carry members, or records, that cannot be imported: packed by bzip2, LZMA, xz or\n"
        "PPMd, ZIP64, sizes in a place where they must not be. One that is fine is left untouched.");
    AddFlag(parser, "-n,--dry-run", options->dryRun, "Only tell what would be done");
    AddFlag(parser, "--drop", options->drop,
            "Leave out what stands in front of the archive or belongs to no member, and the archive's comment");
    AddFlag(parser, "-f,--force", options->force, "Write-protected archives, and ones with several names, too");
    AddPaths(parser, *paths, "Archives");
    return
        [options, paths] { return paths->empty() ? WrongUse("mend", "no PATH is given") : RunMend(*options, *paths); };
}

Action DeclareHandler(CLI::App& parser) {
    const auto indexer = std::make_shared<std::optional<Indexer>>();
    parser.footer(
        "Started by the indexer, as its configuration tells it; 'wqf setup' enters it there. The indexer asks on "
        "standard\n"
        "input and is answered on standard output.");
    AddChoice<std::optional<Indexer>>(parser, "INDEXER", *indexer,
                                      {{"recoll", Indexer::Recoll}, {"kfilemetadata", Indexer::KFileMetaData}},
                                      "Who asks: Recoll, for many documents, or the file indexer of KDE, for one");
    indexer->reset();
    return [indexer] { return *indexer ? RunHandler(**indexer) : WrongUse("handler", "no INDEXER is given"); };
}

Action DeclareSetup(CLI::App& parser) {
    const auto options = std::make_shared<SetupOptions>();
    const auto indexer = std::make_shared<std::optional<Indexer>>();
    parser.footer(
        "The lines stand between two marks. Done again it brings them up to date; what stands around them is left "
        "alone.");
    AddText(parser, "--confdir", options->configuration, "DIR",
            "The indexer's configuration; otherwise the one that it takes by itself");
    AddFlag(parser, "--remove", options->remove, "Take the lines out again");
    AddChoice<std::optional<Indexer>>(parser, "INDEXER", *indexer, {{"recoll", Indexer::Recoll}},
                                      "Whose configuration the handler is entered in");
    indexer->reset();
    return
        [options, indexer] { return *indexer ? RunSetupRecoll(*options) : WrongUse("setup", "no INDEXER is given"); };
}

constexpr Command kCommands[] = {
    {"import", "Print the attributes that the plug-in imports from documents", DeclareImport},
    {"index", "Keep an index of the documents in folders", DeclareIndex},
    {"search", "Find documents in the index", DeclareSearch},
    {"check", "Tell whether documents load, and what is wrong with them", DeclareCheck},
    {"scene", "Print the model in a document as JSON", DeclareScene},
    {"catalogue", "Print the design catalogue as JSON", DeclareCatalogue},
    {"ls", "List folders and archives", DeclareLs},
    {"cat", "Print the contents of files", DeclareCat},
    {"cp", "Copy files and folders into archives, out of them and between them", DeclareCp},
    {"mv", "Move files and folders into archives, out of them and between them", DeclareMv},
    {"rm", "Remove files and folders in archives", DeclareRm},
    {"mkdir", "Make folders in archives", DeclareMkdir},
    {"new", "Make empty archives", DeclareNew},
    {"mend", "Write archives anew so that they can be imported", DeclareMend},
    {"handler", "Read documents for an indexer of the desktop", DeclareHandler},
    {"setup", "Have an indexer of the desktop find documents, or no longer", DeclareSetup},
};

const Command* FindCommand(const std::string& name) {
    const auto found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                    [&](const Command& command) { return command.name == name; });
    return found == std::end(kCommands) ? nullptr : found;
}

int Print(const std::string& text) {
    Output output;
    output.Write(text);
    return ExitStatusOf(output);
}

int PrintOverview() {
    std::string text = "Usage: wqf COMMAND [OPTIONS] ...\n\nLooks into brick-model documents.\n\nCommands:\n";
    for (const Command& command : kCommands) {
        std::string line = "  " + std::string(command.name);
        line.resize(std::max<std::size_t>(line.size() + 2, 14), ' ');
        text += line + command.summary + "\n";
    }
    text += "\n'wqf help COMMAND' tells the options of a command; 'wqf --version' the version.\n";
    return Print(text);
}

int RunCommand(const Command& command, const std::vector<std::string>& given) {
    CLI::App parser(command.summary, std::string("wqf ") + command.name);
    const Action action = command.declare(parser);
    std::vector<std::string> arguments = Shielded(given);
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    try {
        parser.parse(arguments);
    } catch (const CLI::CallForHelp&) {
        return Print(parser.help());
    } catch (const CLI::ExtrasError&) {
        // Its own text would end at the first shield.
        const std::string extra = parser.remaining().front();
        return WrongUse(command.name, (extra.starts_with("-") ? "there is no option '" : "takes no argument, as '") +
                                          Bared(extra) + "'");
    } catch (const CLI::ParseError& error) {
        // Its own exit codes go up to 115 and would be taken for something else.
        return WrongUse(command.name, WithoutShields(error.what()));
    }
    return action();
}

int RunHelp(const std::vector<std::string>& topics) {
    if (topics.empty()) return PrintOverview();
    const Command* const command = FindCommand(topics[0]);
    if (command == nullptr) return WrongUse("", "there is no command '" + topics[0] + "'");
    return RunCommand(*command, {"--help"});
}

OptionDescription DescriptionOf(const CLI::Option& option) {
    OptionDescription description{
        {}, option.get_type_name(), option.get_items_expected_max() > 1, option.get_description()};
    if (option.get_positional()) {
        if (description.value.empty()) description.value = option.get_name(true);
        return description;
    }
    for (const std::string& name : option.get_snames()) description.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) description.names.push_back("--" + name);
    if (option.get_items_expected_max() == 0) description.value.clear();
    return description;
}

}  // namespace

std::vector<CommandDescription> DescribeCommands() {
    std::vector<CommandDescription> descriptions;
    for (const Command& command : kCommands) {
        CLI::App parser(command.summary);
        const Action undone = command.declare(parser);
        CommandDescription description{command.name, command.summary, parser.get_footer(), {}};
        for (const CLI::Option* option : std::as_const(parser).get_options()) {
            description.options.push_back(DescriptionOf(*option));
        }
        descriptions.push_back(std::move(description));
    }
    return descriptions;
}

int RunCommandLine(const std::vector<std::string>& arguments) {
    if (arguments.empty()) return WrongUse("", "no command is given");
    const std::string& first = arguments[0];
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (first == "--help" || first == "-h") return PrintOverview();
    if (first == "--version") return Print("wqf " ZEMA_VERSION "\n");
    if (first == "help") return RunHelp(rest);
    const Command* const command = FindCommand(first);
    if (command != nullptr) return RunCommand(*command, rest);
    return WrongUse("", (first.starts_with("-") ? "there is no option '" : "there is no command '") + first + "'");
}

}  // namespace ZEMA
