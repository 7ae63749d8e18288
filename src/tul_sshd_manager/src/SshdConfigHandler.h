#ifndef TUL_SSHD_CONFIG_HANDLER_H
#define TUL_SSHD_CONFIG_HANDLER_H

#include <string>

#include "TulConfiguration.h"

namespace TulSshdManagement {

/**
 * Reads the component's section of the XML configuration, once, strictly.
 *
 * The getters are meaningful after a successful read; the ports and the time only when sshd is managed. One
 * thread at a time.
 */
class SshdConfigHandler : public Tul::TulConfiguration {
public:
    SshdConfigHandler();
    ~SshdConfigHandler() override;

    /** 0; -1 for anything that is wrong with the text; -8 for a null pointer. */
    int readComponentConfiguration(const char* configuration);

    bool getSshdManagement() const { return _sshdManagement; }
    unsigned int getCliport() const { return _cliPort; }                     /**< any 32-bit number */
    unsigned int getNetconfport() const { return _netconfPort; }             /**< any 32-bit number */
    unsigned int getRenegotiationtime() const { return _renegotiationTime; } /**< 0: none */

private:
    int readSection(Poco::XML::Element* section);

    /** 0: found once; -1: several; -2: none. */
    int getElementValue(const std::string& tag, std::string& value, Poco::XML::Element* parent);

    int getBooleanValueFromCfg(const std::string& tag, bool& value, Poco::XML::Element* parent);
    int getUintValueFromCfg(const std::string& tag, unsigned int& value, Poco::XML::Element* parent);

    unsigned int _cliPort = 0;
    unsigned int _netconfPort = 0;
    unsigned int _renegotiationTime = 0;
    bool _sshdManagement = false;
};

}  // namespace TulSshdManagement

#endif
