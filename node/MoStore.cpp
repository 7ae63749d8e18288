#include "MoStore.h"

#include <sqlite3.h>

#include <stdexcept>
#include <utility>

#include "Dn.h"

namespace TulNode {

namespace {

/** "tuln": tells our files from other people's databases. */
constexpr int applicationId = 0x74756C6E;
constexpr int formatVersion = 1;

constexpr const char* schemaStatements = R"(
    CREATE TABLE mo (dn TEXT PRIMARY KEY, parent TEXT NOT NULL, classPath TEXT NOT NULL, version INTEGER NOT NULL)
        WITHOUT ROWID;
    CREATE INDEX moByParent ON mo (parent);
    CREATE INDEX moByClassPath ON mo (classPath);
    CREATE TABLE value (dn TEXT NOT NULL REFERENCES mo ON DELETE CASCADE, name TEXT NOT NULL,
                        position INTEGER NOT NULL, type INTEGER NOT NULL, value NOT NULL,
                        PRIMARY KEY (dn, name, position)) WITHOUT ROWID;
)";

Scalar scalarOf(const SQLite::Column& column) {
    if (column.isText()) {
        return column.getString();
    }
    return column.getInt64();
}

std::string fileOrMemory(const std::string& file) {
    return file.empty() ? ":memory:" : file;
}

}  // namespace

MoStore::MoStore(const std::string& file) try
    : _database(fileOrMemory(file), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE) {
    prepareFile();
} catch (const SQLite::Exception& e) {
    const std::string cause = e.getErrorCode() == SQLITE_BUSY ? "another process uses it" : e.what();
    throw std::runtime_error("cannot use " + file + " as the state of the node: " + cause);
}

void MoStore::prepareFile() {
    // A second node on the same file must fail here, not in the middle of its first commit.
    _database.exec("PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
    SQLite::Transaction transaction(_database, SQLite::TransactionBehavior::EXCLUSIVE);
    const int id = _database.execAndGet("PRAGMA application_id").getInt();
    const int version = _database.execAndGet("PRAGMA user_version").getInt();
    const bool isNew = _database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0;
    if (isNew) {
        _database.exec(schemaStatements);
        _database.exec("PRAGMA application_id = " + std::to_string(applicationId));
        _database.exec("PRAGMA user_version = " + std::to_string(formatVersion));
    } else if (id != applicationId || version != formatVersion) {
        throw std::runtime_error(_database.getFilename() + " is a database, but not the state of a node");
    }
    _commits = _database.execAndGet("SELECT ifnull(max(version), 0) FROM mo").getInt64();
    transaction.commit();
    // A commit waits for the disk once, not three times. Only now: a file that is not ours stays as it was.
    _database.exec("PRAGMA journal_mode = WAL");
}

/** A compiled statement in use. It is reset afterwards: a query that is left half-way would hold the database. */
class MoStore::Prepared {
public:
    explicit Prepared(SQLite::Statement& statement) : _statement(&statement) {}
    Prepared(Prepared&& other) noexcept : _statement(std::exchange(other._statement, nullptr)) {}
    ~Prepared() {
        if (_statement != nullptr) {
            _statement->tryReset();
        }
    }

    SQLite::Statement* operator->() const { return _statement; }

    Prepared& operator=(Prepared&&) = delete;

private:
    SQLite::Statement* _statement;
};

template <class... Arguments>
MoStore::Prepared MoStore::prepared(const char* text, const Arguments&... arguments) {
    Prepared statement(_statements.try_emplace(text, _database, text).first->second);
    int position = 0;
    (statement->bind(++position, arguments), ...);
    return statement;
}

std::vector<std::string> MoStore::texts(Prepared query) {
    std::vector<std::string> result;
    while (query->executeStep()) {
        result.push_back(query->getColumn(0).getString());
    }
    return result;
}

std::optional<std::int64_t> MoStore::version(const std::string& dn) {
    const Prepared query = prepared("SELECT version FROM mo WHERE dn = ?", dn);
    return query->executeStep() ? std::optional(query->getColumn(0).getInt64()) : std::nullopt;
}

std::optional<StoredMo> MoStore::find(const std::string& dn) {
    const std::optional<std::int64_t> found = version(dn);
    if (!found) {
        return std::nullopt;
    }
    StoredMo mo{*found, {}};
    const Prepared query = prepared("SELECT name, type, value FROM value WHERE dn = ? ORDER BY name, position", dn);
    while (query->executeStep()) {
        AttributeValue& value = mo.attributes[query->getColumn(0).getString()];
        value.type = static_cast<TulOamSpiMoAttributeType_3>(query->getColumn(1).getInt());
        value.values.push_back(scalarOf(query->getColumn(2)));
    }
    return mo;
}

std::vector<std::string> MoStore::children(const std::string& dn) {
    return texts(prepared("SELECT dn FROM mo WHERE parent = ? ORDER BY dn", dn));
}

std::vector<std::string> MoStore::instances(const std::string& classPath) {
    return texts(prepared("SELECT dn FROM mo WHERE classPath = ? ORDER BY dn", classPath));
}

std::vector<std::string> MoStore::all() {
    return texts(prepared("SELECT dn FROM mo ORDER BY dn"));
}

void MoStore::apply(const std::vector<MoChange>& changes) {
    if (changes.empty()) {
        return;
    }
    // Counted up even if the commit fails: a number may be skipped, but never be given twice.
    ++_commits;
    SQLite::Transaction transaction(_database);
    for (const MoChange& change : changes) {
        applyOne(change);
    }
    transaction.commit();
}

void MoStore::applyOne(const MoChange& change) {
    if (change.type == DELETED) {
        prepared("DELETE FROM mo WHERE dn = ?", change.dn)->exec();
        return;
    }
    if (change.type == CREATED) {
        const Dn dn(change.dn);
        prepared("INSERT INTO mo VALUES (?, ?, ?, ?)", change.dn, dn.parent(), dn.classPath(), _commits)->exec();
    } else {
        prepared("UPDATE mo SET version = ? WHERE dn = ?", _commits, change.dn)->exec();
    }
    for (const auto& [name, value] : change.attributes) {
        prepared("DELETE FROM value WHERE dn = ? AND name = ?", change.dn, name)->exec();
        insertValues(change.dn, name, value);
    }
}

void MoStore::insertValues(const std::string& dn, const std::string& name, const AttributeValue& value) {
    constexpr const char* statement = "INSERT INTO value VALUES (?, ?, ?, ?, ?)";
    int position = 0;
    for (const Scalar& scalar : value.values) {
        std::visit(
            [&](const auto& one) { prepared(statement, dn, name, position, std::int32_t{value.type}, one)->exec(); },
            scalar);
        ++position;
    }
}

}  // namespace TulNode
