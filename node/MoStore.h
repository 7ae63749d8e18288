#ifndef TUL_NODE_MO_STORE_H
#define TUL_NODE_MO_STORE_H

#include <SQLiteCpp/SQLiteCpp.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "BryOamSpiCmEvent_Notification_1.h"
#include "Value.h"

namespace TulNode {

/** What one commit did to one MO. */
struct MoChange {
    CmEventType type;
    std::string dn;
    Attributes attributes; /**< as BryOamSpiCmEvent_Notification_1.h says for each type */
};

/** An MO in force. */
struct StoredMo {
    std::int64_t version;  /**< differs after every commit that changed it, also when deleted and created again */
    Attributes attributes; /**< those that have a value */
};

/**
 * The MOs that are in force, kept in one SQLite file. What a commit wrote is on disk when apply() returns.
 *
 * It knows no rules of the model: what is applied must have been checked. One thread at a time. Every operation
 * may throw SQLite::Exception.
 */
class MoStore {
public:
    /** Opens or makes the file; empty: memory, gone with the object. std::runtime_error says what is wrong. */
    explicit MoStore(const std::string& file);

    std::optional<StoredMo> find(const std::string& dn);
    bool contains(const std::string& dn) { return version(dn).has_value(); }
    std::optional<std::int64_t> version(const std::string& dn);

    /** DNs, sorted: the MOs right below one, those of a class path, and all. */
    std::vector<std::string> children(const std::string& dn);
    std::vector<std::string> instances(const std::string& classPath);
    std::vector<std::string> all();

    /** Puts all changes in force, or none when it throws. Without changes nothing is written. */
    void apply(const std::vector<MoChange>& changes);

private:
    void prepareFile();
    void applyOne(const MoChange& change);
    void insertValues(const std::string& dn, const std::string& name, const AttributeValue& value);
    class Prepared;
    template <class... Arguments>
    Prepared prepared(const char* text, const Arguments&... arguments);
    std::vector<std::string> texts(Prepared query);

    SQLite::Database _database;
    std::map<std::string_view, SQLite::Statement> _statements; /**< compiled at their first use; by literals */
    std::int64_t _commits = 0;
};

}  // namespace TulNode

#endif
