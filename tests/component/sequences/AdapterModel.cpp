#include "AdapterModel.h"

#include <utility>

namespace Sequences {

namespace {

constexpr int limit = 30000;

}  // namespace

void AdapterModel::enablePorts(const std::string& subsystem, unsigned port) {
    runPort("enablePorts", {subsystem, "unlock", "port", std::to_string(port)});
}

void AdapterModel::disablePorts(const std::string& subsystem) {
    if (_stage.isBent(Bend::DISABLING_NAMES_A_PORT)) {
        return runPort("disablePorts", {subsystem, "lock", "port", "22"});
    }
    runPort("disablePorts", {subsystem, "lock"});
}

void AdapterModel::runPort(const std::string& function, const std::vector<std::string>& words) {
    try {
        _stage.run(words, limit);
    } catch (const Stage::Failure& failure) {
        if (failure.kind == Ending::INTEGER && !_stage.isBent(Bend::EVERY_EXCEPTION_OF_A_PORT_IS_CAUGHT)) {
            throw;
        }
        _stage.error(function, failure.text);
    }
}

/** Whatever becomes of the run, the options are gone. */
bool AdapterModel::runBatch() {
    if (_queue.empty()) {
        return true;
    }
    const std::vector<std::string> options = std::exchange(_queue, {});
    std::vector<std::string> words{"ssh"};
    words.insert(words.end(), options.begin(), options.end());
    try {
        _stage.run(words, limit);
    } catch (const Stage::Failure& failure) {
        if (_stage.isBent(Bend::FAILED_BATCH_IS_RETRIED)) {
            _queue = options;
        }
        if (failure.kind == Ending::INTEGER) {
            throw;
        }
        _stage.error("invokeVorma", failure.text);
        return false;
    }
    return true;
}

/** Asked until there is an answer that is not negative; no answer is one too. */
Revision AdapterModel::revision() {
    const bool isNegativeKept = _stage.isBent(Bend::NEGATIVE_REVISION_IS_CACHED);
    if (_revision >= none || (isNegativeKept && _revision != unasked)) {
        return _revision;
    }
    try {
        const int queryLimit = _stage.isBent(Bend::QUERY_HAS_THIRTY_SECONDS) ? limit : 5000;
        const std::string output = _stage.run({"spi-revision"}, queryLimit);
        _revision = output.empty() ? none : parsed(output);
    } catch (const Stage::Failure& failure) {
        if (failure.kind != Ending::TUL_EXCEPTION) {
            throw;
        }
        _stage.warning("getVormaSpiRevision", failure.text);
        _revision = _stage.isBent(Bend::FAILED_QUERY_IS_REPEATED) ? unasked : none;
    }
    return _revision;
}

Revision AdapterModel::parsed(const std::string& text) {
    for (const RevisionSpelling& spelling : revisionSpellings) {
        if (text == spelling.text && spelling.isRevision) {
            return spelling.meaning;
        }
    }
    _stage.warning("fromString", "Failed to parse vorma spi-revision: '" + text + "'");
    return none;
}

void AdapterModel::setDscp(const std::string& dscp) {
    if (revision() < Revision{1, 7, 0}) {
        return _stage.warning("setDscp",
                              "IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0.");
    }
    if (_stage.isBent(Bend::DSCP_REPLACES_WHAT_IS_QUEUED)) {
        _queue.clear();
    }
    if (!dscp.empty()) {
        _queue.insert(_queue.end(), {"--ipQos", dscp});
    } else if (!_stage.isBent(Bend::MISSING_DSCP_QUEUES_NOTHING)) {
        _queue.emplace_back("--removeIpQoS");
    }
}

void AdapterModel::setRenegotiationTime(unsigned value) {
    const int minor = _stage.isBent(Bend::RENEGOTIATION_NEEDS_1_7) ? 7 : 8;
    if (revision() < Revision{1, minor, 0}) {
        return _stage.warning("setRenegotiationtime",
                              "Renegotiation configuration is not applied. Vorma spi-revision must be >= 1.8.0.");
    }
    const bool isNone = value == 0 && !_stage.isBent(Bend::NO_RENEGOTIATION_IS_0);
    _queue.insert(_queue.end(), {"--renegotiationTime", isNone ? "none" : std::to_string(value)});
}

void AdapterModel::setCiphers(const std::map<std::string, std::string>& selected) {
    static const std::map<std::string, std::string> options{
        {"selectedCiphers", "--ciphers"}, {"selectedKeyExchanges", "--kexAlgorithms"}, {"selectedMacs", "--macs"}};
    if (selected.empty()) {
        return;
    }
    if (revision() < Revision{1, 7, 0}) {
        return _stage.warning("setCiphers",
                              "Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0.");
    }
    for (const auto& [name, list] : selected) {
        if (!list.empty() || !_stage.isBent(Bend::EMPTY_TEXT_IS_NO_ALGORITHM)) {
            _queue.insert(_queue.end(), {options.at(name), list});
        }
    }
}

}  // namespace Sequences
