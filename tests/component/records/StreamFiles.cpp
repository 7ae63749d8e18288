#include "StreamFiles.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace TulTest {

namespace {

using Words = std::vector<std::string>;

/** Words end at a blank, but for those in quotes. */
Words wordsOf(const std::string& line) {
    Words words;
    bool isQuoted = false;
    bool isInside = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool ends = line[i] == ' ' && !isQuoted;
        if (!ends && !isInside) {
            words.emplace_back();
        }
        isInside = !ends;
        if (isInside) {
            words.back() += line[i];
        }
        if (isQuoted && line[i] == '\\') {
            words.back() += line[++i];
        } else if (line[i] == '"') {
            isQuoted = !isQuoted;
        }
    }
    return words;
}

std::string joined(Words::const_iterator first, const Words& words) {
    std::string text;
    for (; first != words.end(); ++first) {
        text += " " + *first;
    }
    return text;
}

/** Who writes a record. */
struct Writer {
    std::string handle;
    std::string file;
    std::string function;
};

/** What all paths of an operation share. */
struct Operation {
    Writer writer;
    Lines first;
    Lines last;
};

struct Section {
    std::string operation;
    Words arguments;
    bool isFramed; /**< by the operation's first and last record */
    std::shared_ptr<Lines> lines;
};

class Book {
public:
    explicit Book(const std::filesystem::path& folder) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            read(entry.path());
        }
    }

    std::map<std::string, Lines> streams() const {
        std::map<std::string, Lines> streams;
        for (const auto& [name, section] : _sections) {
            if (std::isupper(static_cast<unsigned char>(name[name.find('/') + 1])) != 0) {
                write(name, {}, streams[name]);
            }
        }
        return streams;
    }

private:
    void read(const std::filesystem::path& path) {
        const std::string name = path.stem().string();
        Operation& operation = _operations[name];
        std::ifstream file(path);
        std::shared_ptr<Lines> lines;
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("==")) {
                lines = lines && lines->empty() ? lines : std::make_shared<Lines>();
                add(name, line.substr(0, line.find("  # ")), lines);
            } else if (lines) {
                lines->push_back(line);
            } else if (line.starts_with("@")) {
                const Words words = wordsOf(line);
                operation.writer = {words.at(1), words.at(2), words.at(3)};
            } else {
                (line.starts_with(">>") ? operation.first : operation.last).push_back(line);
            }
        }
    }

    void add(const std::string& operation, const std::string& header, const std::shared_ptr<Lines>& lines) {
        const Words words = wordsOf(header);
        const std::string name = operation + "/" + words.at(1);
        const Section section{operation, Words(words.begin() + 2, words.end()), words.front() == "==", lines};
        if (!_sections.emplace(name, section).second) {
            throw std::logic_error("two streams have the name " + name);
        }
    }

    void write(const std::string& name, const Words& given, Lines& calls) const {
        const auto found = _sections.find(name);
        if (found == _sections.end()) {
            throw std::logic_error("no stream has the name " + name);
        }
        const Section& section = found->second;
        const Operation& operation = _operations.at(section.operation);
        Words arguments = section.arguments;
        if (given.size() > arguments.size()) {
            throw std::logic_error("too many arguments for the stream " + name);
        }
        std::copy(given.begin(), given.end(), arguments.begin());
        Lines lines = *section.lines;
        if (section.isFramed) {
            lines.insert(lines.begin(), operation.first.begin(), operation.first.end());
            lines.insert(lines.end(), operation.last.begin(), operation.last.end());
        }
        for (const std::string& line : lines) {
            write(section.operation, line, arguments, calls);
        }
    }

    void write(const std::string& operation, const std::string& line, const Words& arguments, Lines& calls) const {
        Words words = wordsOf(line);
        for (std::string& word : words) {
            word = word.starts_with("$") ? arguments.at(std::stoul(word.substr(1)) - 1) : word;
        }
        if (words.front() == "->") {
            write(words.at(1), Words(words.begin() + 2, words.end()), calls);
        } else if (words.front() != "nothing") {
            write(writerOf(words, operation), words, calls);
        }
    }

    /** Takes the writer's name off the words. */
    Writer writerOf(Words& words, const std::string& operation) const {
        const Writer& own = _operations.at(operation).writer;
        if (!words.front().ends_with(":")) {
            return own;
        }
        const std::string name = words.front().substr(0, words.front().size() - 1);
        words.erase(words.begin());
        const auto other = _operations.find(name);
        return other == _operations.end() ? Writer{own.handle, own.file, name} : other->second.writer;
    }

    static void write(const Writer& writer, const Words& words, Lines& calls) {
        static const std::map<std::string, std::string> kinds{{">>", "9"}, {"<<", "10"}, {"--", "0"}};
        static const std::map<std::string, std::string> severities{{"error", "3"}, {"warning", "4"}, {"info", "6"}};
        const std::string message = joined(words.begin() + 1, words);
        const auto kind = kinds.find(words.front());
        const std::string level = kind == kinds.end() ? severities.at(words.front()) : "14";
        calls.push_back(kind == kinds.end()
                            ? "log_printf " + writer.function + " " + level + " 1" + message
                            : "trace_printf " + writer.file + " " + writer.function + " " + kind->second + message);
        calls.push_back("trace_v2_printf " + writer.handle + " " + level + " " + writer.file + " " + writer.function +
                        message);
    }

    std::map<std::string, Operation> _operations;
    std::map<std::string, Section> _sections;
};

}  // namespace

std::map<std::string, Lines> readStreams(const std::filesystem::path& folder) {
    return Book(folder).streams();
}

}  // namespace TulTest
