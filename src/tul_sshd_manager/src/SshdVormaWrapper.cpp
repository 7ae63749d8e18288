#include "SshdVormaWrapper.h"

#include <algorithm>
#include <iterator>

#include "Logging.h"
#include "TulException.h"

namespace TulSshdManagement {

// The texts of the records are an interface: operators and their tools know them as they stand, "removePorts" in
// disablePorts, "Vorma" once with a capital letter, blanks at their ends and ports printed with %d included.

using Tul::Trace::TulSshd;

namespace {

const int revisionTimeout = 5000;  // milliseconds; the query changes nothing, so it is given less time than a run

}  // namespace

const Tul::VormaSpiVersion SshdVormaWrapper::_minimumVersionSupportingCipherSuites{1, 7, 0};
const Tul::VormaSpiVersion SshdVormaWrapper::_minimumVersionSupportingIPQoS{1, 7, 0};
const Tul::VormaSpiVersion SshdVormaWrapper::_minimumVersionSupportingRenegotiation{1, 8, 0};

SshdVormaWrapper::SshdVormaWrapper() : Tul::ScriptWrapper("vorma") {}

SshdVormaWrapper::~SshdVormaWrapper() {
    _pendingArgs.clear();
}

bool SshdVormaWrapper::enablePorts(const std::string& subsystem, unsigned int port, int timeout) {
    TUL_TRACE_ENTRY(TulSshd, " >> enablePorts for %s subsystem: %d", subsystem.c_str(), port);
    const std::vector<std::string> args{subsystem, "unlock", "port", std::to_string(port)};
    try {
        invoke(args, timeout);
    } catch (const std::exception& exception) {
        TUL_ERROR(TulSshd, "%s", exception.what());
        TUL_TRACE_EXIT(TulSshd, " << %s", exception.what());
        return false;
    }
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to enable ports in sshd configuration file");
    return true;
}

bool SshdVormaWrapper::disablePorts(const std::string& subsystem, int timeout) {
    TUL_TRACE_ENTRY(TulSshd, " >> removePorts for %s subsystem", subsystem.c_str());
    const std::vector<std::string> args{subsystem, "lock"};
    try {
        invoke(args, timeout);
    } catch (const std::exception& exception) {
        TUL_ERROR(TulSshd, "%s", exception.what());
        TUL_TRACE_EXIT(TulSshd, " << %s", exception.what());
        return false;
    }
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to disable ports in sshd configuration file");
    return true;
}

bool SshdVormaWrapper::invokeVorma(int timeout) {
    TUL_TRACE_ENTRY(TulSshd, " >> Invoke Vorma");
    Poco::ScopedLock<Poco::Mutex> lock(_mutex);
    if (_pendingArgs.empty()) {
        TUL_TRACE_EXIT(TulSshd, " << ");
        return false;
    }
    std::vector<std::string> args{"ssh"};
    prepareArgs(args);
    try {
        invoke(args, timeout);
    } catch (const std::exception& exception) {
        TUL_ERROR(TulSshd, "%s", exception.what());
        TUL_TRACE_EXIT(TulSshd, " << %s", exception.what());
        return false;
    }
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to set configuration data to vorma");
    return true;
}

/** All words or, when memory runs out, none: an option without its value would spoil the next batch. */
void SshdVormaWrapper::queue(std::vector<std::string> words) {
    _pendingArgs.reserve(_pendingArgs.size() + words.size());
    std::move(words.begin(), words.end(), std::back_inserter(_pendingArgs));
}

void SshdVormaWrapper::prepareArgs(std::vector<std::string>& args) {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    args.insert(args.end(), _pendingArgs.begin(), _pendingArgs.end());
    _pendingArgs.clear();
    TUL_TRACE_EXIT(TulSshd, " << ");
}

std::string SshdVormaWrapper::getOptionForSelectedAttrs(std::string attributeName) {
    if (attributeName == "selectedCiphers") {
        return "--ciphers";
    }
    if (attributeName == "selectedKeyExchanges") {
        return "--kexAlgorithms";
    }
    if (attributeName == "selectedMacs") {
        return "--macs";
    }
    return "";
}

Tul::VormaSpiVersion SshdVormaWrapper::getVormaSpiRevision() const {
    TUL_TRACE_ENTRY(TulSshd, " >> ");
    if (!(_spiRevision < Tul::VormaSpiVersion{})) {
        return _spiRevision;
    }
    try {
        const std::string output = invoke({"spi-revision"}, revisionTimeout);
        TUL_TRACE(TulSshd, "vorma spi-revision returned: '%s'", output.c_str());
        Tul::VormaSpiVersion revision;
        if (output.empty()) {
            TUL_TRACE(TulSshd, "vorma spi version not found");
        } else {
            revision.fromString(output);  // what cannot be read is 0.0.0, an answer like any other
        }
        _spiRevision = revision;
    } catch (const Tul::TulException& exception) {
        TUL_WARNING(TulSshd, "%s", exception.what());
        TUL_TRACE_EXIT(TulSshd, " << %s", exception.what());
        _spiRevision = Tul::VormaSpiVersion{};
    }
    return _spiRevision;
}

void SshdVormaWrapper::setCiphers(const std::map<std::string, std::string>& selected) {
    TUL_TRACE_ENTRY(TulSshd, " >> Update ciphers");
    if (selected.empty()) {
        TUL_INFO(TulSshd, "No ciphers to update.");
        return;
    }
    if (getVormaSpiRevision() < _minimumVersionSupportingCipherSuites) {
        TUL_WARNING(TulSshd, "Cipher suite configuration is not applied. vorma spi-revision must be >= 1.7.0.");
        return;  // wanted without an exit trace, as in setDscp
    }
    std::vector<std::string> words;
    for (const auto& [attributeName, list] : selected) {
        const std::string option = getOptionForSelectedAttrs(attributeName);
        if (!option.empty()) {
            words.push_back(option);
            words.push_back(list);
        }
    }
    queue(std::move(words));
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to set the cipher attributes");
}

bool SshdVormaWrapper::setDscp(const std::string& dscp) {
    TUL_TRACE_ENTRY(TulSshd, " >> Set dscp value for the service category OaM CM to %s ", dscp.c_str());
    if (getVormaSpiRevision() < _minimumVersionSupportingIPQoS) {
        TUL_WARNING(TulSshd, "IPQoS configuration is not applied on TUL SSHD. vorma spi-revision must be >= 1.7.0.");
        return false;
    }
    if (dscp.empty()) {
        queue({"--removeIpQoS"});  // no value does not leave the old one in place: it takes the marking away
    } else {
        queue({"--ipQos", dscp});
    }
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to set dscp value for the service category OaM CM ");
    return true;
}

bool SshdVormaWrapper::setRenegotiationtime(const unsigned int& value) {
    TUL_TRACE_ENTRY(TulSshd, " >> Update Renegotiation Time: %d", value);
    std::string text = "none";
    if (getVormaSpiRevision() < _minimumVersionSupportingRenegotiation) {
        TUL_WARNING(TulSshd, "Renegotiation configuration is not applied. Vorma spi-revision must be >= 1.8.0.");
        TUL_TRACE_EXIT(TulSshd, " << ");
        return false;
    }
    if (value != 0) {
        text = std::to_string(value);
    }
    queue({"--renegotiationTime", text});
    TUL_TRACE_EXIT(TulSshd, " << Succeeded to set the Renegotiation Time");
    return true;
}

}  // namespace TulSshdManagement
