#ifndef TUL_SSHD_VORMA_WRAPPER_H
#define TUL_SSHD_VORMA_WRAPPER_H

#include <Poco/Mutex.h>

#include <map>
#include <string>
#include <vector>

#include "ScriptWrapper.h"
#include "VormaSpiVersion.h"

namespace TulSshdManagement {

/**
 * The one place that builds command lines of the adapter script "vorma".
 *
 * Ports are opened and closed at once, one run each. Settings are gathered, word by word, and sent in one run by
 * invokeVorma. A setting that the adapter is too old for is left out with a warning; its revision is asked once.
 *
 * Time limits are in milliseconds. invokeVorma locks itself; everything else relies on its callers not to
 * overlap. Failures of the script are logged and reported as false.
 */
class SshdVormaWrapper : private Tul::ScriptWrapper {
public:
    SshdVormaWrapper();
    ~SshdVormaWrapper() override;

    /** Opens the subsystem ("clissh" or "netconfssh") on a port. Neither is checked. */
    bool enablePorts(const std::string& subsystem, unsigned int port, int timeout);

    /** Closes whatever port the subsystem has. Unlike enablePorts it names none: that is wanted. */
    bool disablePorts(const std::string& subsystem, int timeout);

    /** Queues the DSCP in decimal; an empty text queues the removal of the marking. False: adapter too old. */
    virtual bool setDscp(const std::string& dscp);

    /** Queues algorithm lists, comma-separated, by attribute name of the Ssh MO. Other names are skipped. */
    virtual void setCiphers(const std::map<std::string, std::string>& selected);

    /** Queues the renegotiation time, in the adapter's unit; 0 is none. False: adapter too old. */
    bool setRenegotiationtime(const unsigned int& value);

    /**
     * Sends what is queued in one run; false when there is nothing or the run failed. The queue is emptied before
     * the run: a failed batch is dropped, never repeated with the next one, on purpose.
     */
    bool invokeVorma(int timeout);

    /**
     * The adapter's revision. Asked once; an answer that failed counts as 0.0.0 and is kept as well, on purpose:
     * an adapter that cannot answer is not asked again and again.
     */
    Tul::VormaSpiVersion getVormaSpiRevision() const;

    SshdVormaWrapper(const SshdVormaWrapper&) = delete;
    SshdVormaWrapper& operator=(const SshdVormaWrapper&) = delete;

private:
    void queue(std::vector<std::string> words);
    void prepareArgs(std::vector<std::string>& args);
    std::string getOptionForSelectedAttrs(std::string attributeName);

    mutable Tul::VormaSpiVersion _spiRevision{-1, -1, -1}; /**< below 0.0.0: not asked yet */
    std::vector<std::string> _pendingArgs;
    Poco::Mutex _mutex;

    static const Tul::VormaSpiVersion _minimumVersionSupportingCipherSuites;
    static const Tul::VormaSpiVersion _minimumVersionSupportingIPQoS;
    static const Tul::VormaSpiVersion _minimumVersionSupportingRenegotiation;
};

}  // namespace TulSshdManagement

#endif
