#ifndef TUL_SSH_COMPONENT_H
#define TUL_SSH_COMPONENT_H

#include <Poco/Mutex.h>

#include <cstdint>
#include <map>
#include <string>

#include "BryComponent.h"
#include "BryOamSpiCmEvent_Notification_1.h"
#include "CmEventConsumer.h"
#include "SshdConfigHandler.h"
#include "SshdVormaWrapper.h"
#include "TulOamSpiManagedObject_3.h"
#include "TulOamSpiTransactionMaster_1.h"

namespace TulSshdManagement {

/** The administrative state of an SSH MO. Notifications may bring numbers that are not listed. */
enum class BasicAdmState : std::int32_t { LOCKED = 0, UNLOCKED = 1 };

/**
 * The component: keeps sshd in line with the managed objects.
 *
 * initialize, start, stop and terminate are called by the framework, one at a time, and take no lock. The four
 * notification handlers come on the event router's threads and exclude one another through _mutex. start
 * subscribes them before it has finished: a handler may already run then, which is accepted.
 */
class TulSshdManagementComponent : public Tul::BryComponent<TulSshdManagementComponent> {
public:
    TulSshdManagementComponent();
    ~TulSshdManagementComponent();

    /** Reads the configuration. 0; -1 when it is unreadable or was read already; -8 for a null pointer. */
    BryReturnT initialize(const char* configuration);

    /** Makes the component ready for another initialize. A running component goes on running. */
    void terminate();

    /**
     * Brings sshd in line and subscribes to changes; with management switched off, removes the MOs and closes
     * the ports. 0; -1 when not initialised or an interface is missing; the framework's code when an MO cannot
     * be created. Nothing is undone on failure: another start adopts what is there.
     */
    BryReturnT start(BryStateChangeReason reason);

    /** Unsubscribes and closes the ports; the MOs stay. Always 0. */
    BryReturnT stop(BryStateChangeReason reason);

    /** True between a complete start with management on and the next stop. */
    bool isStarted() const;

    /** Puts another adapter in place, before start. Not owned; must outlive the component's use of it. */
    void setVorma(SshdVormaWrapper* vorma) { _vorma = vorma; }

    void onCliSshMoChangeNotification(const BryOamSpiCmEvent_Notification_1T& notification);
    void onNetconfSshMoChangeNotification(const BryOamSpiCmEvent_Notification_1T& notification);
    void onServiceCategoryMoChangeNotification(const BryOamSpiCmEvent_Notification_1T& notification);
    void onSshMoCipherChangeNotification(const BryOamSpiCmEvent_Notification_1T& notification);

    /** The DN of the first instance of a class path, or an empty text. Does not throw for a failed search. */
    std::string getDnValue(const std::string& classPath);

    /** Creates an unlocked MO with the key "1" below SysM. 0; -2 without SysM; else the framework's code. */
    BryReturnT createMo(std::string className, std::string keyAttrName);

    /** 0, or the framework's code. */
    BryReturnT deleteMoInstance(const std::string& dn);

    /** 0; -1 when it cannot be read, and then `state` is as it was. Every value but 1 counts as locked. */
    int getAdministrativeState(std::string& dn, BasicAdmState& state);

    /** The DSCP of operation and maintenance traffic in decimal; empty when there is none. */
    std::string getDscp();

    /** Attribute name to comma-separated algorithms, without the lists that are empty or unreadable. */
    std::map<std::string, std::string> fetchCipherConfiguration(const std::string& sshDn);

private:
    template <class InterfaceT>
    bool fetchInterface(const BryMgmtSpiInterface_1& id, InterfaceT*& slot);
    void applyPort(const char* subsystem, unsigned int port, BasicAdmState state);
    void applyStateChange(const BryOamSpiCmEvent_Notification_1T& notification, const char* subsystem,
                          unsigned int port, BasicAdmState& state);
    void deleteFirstInstance(const std::string& classPath);
    void withdraw();
    void startConsumers();
    void stopConsumers();

    bool _started = false;
    bool _initialized = false;
    SshdVormaWrapper _vormaWrapper;
    SshdVormaWrapper* _vorma = &_vormaWrapper;
    BasicAdmState _cliSshAdmState = BasicAdmState::LOCKED;
    BasicAdmState _netconfSshAdmState = BasicAdmState::LOCKED;
    Poco::Mutex _mutex;
    Tul::CmEventConsumer<TulSshdManagementComponent, 1> _cliSshConsumer;
    Tul::CmEventConsumer<TulSshdManagementComponent, 2> _netconfSshConsumer;
    Tul::CmEventConsumer<TulSshdManagementComponent, 3> _serviceCategoryConsumer;
    Tul::CmEventConsumer<TulSshdManagementComponent, 4> _sshConsumer;
    TulOamSpiManagedObject_3* _managedObjectIf = nullptr;
    TulOamSpiTransactionMaster_1* _transactionMasterIf = nullptr;
    SshdConfigHandler _configHandler;
};

}  // namespace TulSshdManagement

#endif
