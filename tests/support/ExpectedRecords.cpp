#include "ExpectedRecords.h"

#include <utility>

namespace TulTest {

RecordSource::RecordSource(std::string subsystem, std::string sourceFile)
    : _subsystem(std::move(subsystem)), _sourceFile(std::move(sourceFile)) {}

Records RecordSource::error(const std::string& function, const std::string& format, const Text& text) const {
    return logged(3, function, format, text);
}

Records RecordSource::warning(const std::string& function, const std::string& format, const Text& text) const {
    return logged(4, function, format, text);
}

Records RecordSource::information(const std::string& function, const std::string& format, const Text& text) const {
    return logged(6, function, format, text);
}

Records RecordSource::entry(const std::string& function, const std::string& format, const Text& text) const {
    return traced(9, function, format, text);
}

Records RecordSource::exit(const std::string& function, const std::string& format, const Text& text) const {
    return traced(10, function, format, text);
}

Records RecordSource::trace(const std::string& function, const std::string& format, const Text& text) const {
    return traced(0, function, format, text);
}

Records RecordSource::logged(int severity, const std::string& function, const std::string& format,
                             const Text& text) const {
    return {{"log", "", "", function, severity, format, text.value_or(format)},
            {"traceV2", _subsystem, _sourceFile, function, severity, format, text.value_or(format)}};
}

Records RecordSource::traced(int kind, const std::string& function, const std::string& format,
                             const Text& text) const {
    return {{"trace", "", _sourceFile, function, kind, format, text.value_or(format)},
            {"traceV2", _subsystem, _sourceFile, function, 14, format, text.value_or(format)}};
}

Records operator+(Records first, const Records& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::ostream& operator<<(std::ostream& stream, const Record& record) {
    stream << record.call;
    for (const std::string& word : {record.subsystem, record.sourceFile}) {
        stream << (word.empty() ? "" : " ") << word;
    }
    return stream << ' ' << record.function << ' ' << record.level << " |" << record.format << "| |" << record.text
                  << '|';
}

}  // namespace TulTest
