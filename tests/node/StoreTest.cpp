#include <SQLiteCpp/SQLiteCpp.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include "ModelFixture.h"
#include "TemporaryDirectory.h"

namespace TulNode {
namespace {

class StoreFile : public testing::Test {
protected:
    std::string file() const { return _directory.path() / "state"; }

    static void ignore(const Commit&) {}

private:
    TulTest::TemporaryDirectory _directory;
};

TEST_F(StoreFile, KeepsEveryValueOverAReopening) {
    const Attributes lists{{"selectedCiphers", texts({"aes256-ctr", "b"})}, {"selectedMacs", texts({"c d"})}};
    {
        MoStore store(file());
        TransactionMaster master(store, ignore);
        applyModel(master, std::string(defaultModel) + "create " + category + " dscp=46\n", "test");
        const auto handle = master.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        master.set(handle, ssh, lists);
        master.commit(handle);
    }
    MoStore store(file());
    EXPECT_EQ(store.find(ssh).value().attributes, lists);
    EXPECT_EQ(store.find(category).value().attributes, (Attributes{{"dscp", uint8(46)}}));
    EXPECT_EQ(store.all().size(), 7U);
}

TEST_F(StoreFile, DoesNotKeepWhatWasNotCommitted) {
    {
        MoStore store(file());
        TransactionMaster master(store, ignore);
        master.create(master.open(TUL_LOCK_POLICY_SHARED, 60, "test"), "ManagedElement=1", {});
    }
    EXPECT_TRUE(MoStore(file()).all().empty());
}

std::string whyNotOpened(const std::string& file) {
    try {
        MoStore store(file);
        return "opened";
    } catch (const std::runtime_error& e) {
        return e.what();
    }
}

TEST_F(StoreFile, IsRefusedWhenAnotherNodeUsesIt) {
    const MoStore store(file());
    EXPECT_THAT(whyNotOpened(file()), testing::HasSubstr("another process uses it"));
}

TEST_F(StoreFile, IsRefusedWhenItIsSomethingElse) {
    std::ofstream(file()) << std::string(4096, 'x');
    EXPECT_THAT(whyNotOpened(file()), testing::HasSubstr("not a database"));
    std::ofstream(file(), std::ios::trunc).close();
    SQLite::Database(file(), SQLite::OPEN_READWRITE).exec("CREATE TABLE other (column)");
    EXPECT_THAT(whyNotOpened(file()), testing::HasSubstr("not the state of a node"));
    EXPECT_THAT(whyNotOpened(file() + ".d/x"), testing::HasSubstr("cannot use"));
}

/** As long as it lives no file can grow beyond a size. */
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : _signalBefore(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &_before);
        const rlimit limit{bytes, _before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &_before);
        signal(SIGXFSZ, _signalBefore);
    }

    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit _before{};
    void (*_signalBefore)(int);
};

TEST_F(StoreFile, IsAsItWasWhenTheDiskIsFullAndGoesOnWhenThereIsRoomAgain) {
    int published = 0;
    MoStore store(file());
    TransactionMaster master(store, [&published](const Commit&) { ++published; });
    applyModel(master, defaultModel, "test");
    const auto handle = master.open(TUL_LOCK_POLICY_SHARED, 60, "test");
    master.set(handle, ssh, {{"selectedMacs", texts(std::vector<std::string>(64, std::string(255, 'a')))}});
    {
        const FileSizeLimit limit(std::filesystem::file_size(file()));
        EXPECT_EQ(codeOf([&] { master.commit(handle); }), BRY_NO_RESOURCES);
    }
    EXPECT_TRUE(master.get(0, ssh).empty());
    EXPECT_EQ(published, 1);
    master.commit(handle);
    EXPECT_EQ(published, 2);
}

TEST_F(StoreFile, IsAsItWasWhenACommitIsImpossible) {
    MoStore store(file());
    TransactionMaster master(store, ignore);
    applyModel(master, defaultModel, "test");
    const std::vector<MoChange> impossible = {{DELETED, ssh, {}}, {CREATED, transport, {}}};
    EXPECT_THROW(store.apply(impossible), SQLite::Exception);
    EXPECT_TRUE(store.contains(ssh));
}

/** Commits one number after another into two MOs, and says each into the pipe when its commit has returned. */
[[noreturn]] void commitForEver(const std::string& file, int acknowledgements) {
    MoStore store(file);
    TransactionMaster master(store, [](const Commit&) {});
    for (int number = 0;; ++number) {
        const auto handle = master.open(TUL_LOCK_POLICY_SHARED, 60, "test");
        master.set(handle, ssh, {{"selectedCiphers", texts({std::to_string(number)})}});
        master.set(handle, category, {{"dscp", uint8(number % 64)}});
        master.commit(handle);
        if (write(acknowledgements, &number, sizeof number) != sizeof number) {
            _exit(1);
        }
    }
}

/** Lets a child commit `count` times, kills it, and returns the last number that it said. */
int killAfter(const std::string& file, int count, unsigned int microseconds) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        commitForEver(file, ends[1]);
    }
    close(ends[1]);
    int last = -1;
    for (int i = 0; i < count && read(ends[0], &last, sizeof last) == sizeof last; ++i) {
    }
    usleep(microseconds);  // any moment of the next commits is as good as another
    kill(child, SIGKILL);
    while (read(ends[0], &last, sizeof last) == sizeof last) {
    }
    close(ends[0]);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    return last;
}

TEST_F(StoreFile, HoldsWholeCommitsAndAllThatReturnedAfterAKill) {
    {
        MoStore store(file());
        TransactionMaster master(store, ignore);
        applyModel(master, std::string(defaultModel) + "create " + category + "\n", "test");
    }
    const unsigned int seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 25; ++round) {
        const int said = killAfter(file(), 1 + round % 4, static_cast<unsigned int>(random() % 3000));
        MoStore store(file());
        const Attributes first = store.find(ssh).value().attributes;
        const Attributes second = store.find(category).value().attributes;
        const int number = std::stoi(std::get<std::string>(first.at("selectedCiphers").values.at(0)));
        EXPECT_GE(number, said);
        EXPECT_LE(number, said + 1);
        EXPECT_EQ(second.at("dscp"), uint8(number % 64));
    }
}

}  // namespace
}  // namespace TulNode
