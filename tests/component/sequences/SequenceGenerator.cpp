#include "SequenceGenerator.h"

#include <memory>

#include "RevisionSpellings.h"

namespace Sequences {

namespace {

namespace gen = rc::gen;
using Texts = std::vector<std::string>;
using TulTest::AttributeValues;

constexpr int openingLength = 12;
constexpr int mainLength = 34;

/** rapidcheck takes less of a range the smaller the size is, and the lengths of our lists are sizes. */
template <class T>
rc::Gen<T> below(T limit) {
    return gen::resize(rc::kNominalSize, gen::inRange<T>(0, limit));
}

/** One of the values; shrinks towards the first. Generators are copied all the time, so the values are shared. */
template <class T>
rc::Gen<T> one(std::vector<T> values) {
    const auto shared = std::make_shared<const std::vector<T>>(std::move(values));
    return gen::map(below(shared->size()), [shared](std::size_t index) { return (*shared)[index]; });
}

rc::Gen<std::string> text(Texts values) {
    return one(std::move(values));
}

/** A vector of up to `longest` elements. */
template <class T>
rc::Gen<std::vector<T>> some(int longest, rc::Gen<T> element) {
    return gen::resize(longest, gen::container<std::vector<T>>(std::move(element)));
}

template <class CommandT>
rc::Gen<Command> command(rc::Gen<CommandT> generator) {
    return gen::map(std::move(generator), [](CommandT what) { return Command{std::move(what)}; });
}

template <class CommandT>
rc::Gen<Command> plain() {
    return gen::just(Command{CommandT{}});
}

// Configurations

rc::Gen<std::string> goodNumber() {
    return gen::weightedOneOf<std::string>({{4, text({"22", "2022", "830", "2830", "0", "+22", "007", "4294967295"})},
                                            {1, gen::map(gen::resize(rc::kNominalSize, gen::arbitrary<unsigned>()),
                                                         [](unsigned number) { return std::to_string(number); })}});
}

rc::Gen<std::string> badNumber() {
    return text({"22abc", "", " 22", "22 ", "-22", "0x16", "4294967296", "99999999999999999999999", "+", "+-5", "abc",
                 "22.0", "4294967296abc", "\n22", "-", "1 2"});
}

/** The texts of all copies of an element; mostly one good one. */
rc::Gen<Texts> copies(std::size_t goodOnes, rc::Gen<std::string> good, rc::Gen<std::string> bad) {
    const auto alone = [](std::string value) { return Texts{std::move(value)}; };
    return gen::weightedOneOf<Texts>({{goodOnes, gen::map(good, alone)},
                                      {2, gen::map(std::move(bad), alone)},
                                      {1, gen::just(Texts{})},
                                      {1, gen::container<Texts>(2, good)}});
}

rc::Gen<Texts> managedCopies() {
    return copies(40,
                  gen::weightedOneOf<std::string>({{9, text({"true", " TRUE ", "True", "\ttrue\n"})},
                                                   {1, text({"false", "FALSE", "\n false ", ""})}}),
                  text({"yes", "   ", "1", "truefalse", "on", "true true"}));
}

rc::Gen<Document> document(std::size_t goodOnes) {
    return gen::construct<Document>(gen::weightedElement<Form>({{40, Form::PLAIN},
                                                                {4, Form::NESTED},
                                                                {1, Form::NULL_POINTER},
                                                                {1, Form::BROKEN},
                                                                {1, Form::NO_SECTION},
                                                                {1, Form::TWO_SECTIONS}}),
                                    managedCopies(), copies(goodOnes, goodNumber(), badNumber()),
                                    copies(goodOnes, goodNumber(), badNumber()),
                                    copies(12, goodNumber(), badNumber()));
}

rc::Gen<Command> init(std::size_t goodOnes) {
    return command(gen::construct<Init>(gen::weightedElement<bool>({{40, true}, {1, false}}), document(goodOnes)));
}

// Managed objects

const std::string sysM = TulTest::sysMDn;

rc::Gen<std::string> ownDn() {
    return text({TulTest::cliSshDn, TulTest::netconfSshDn, TulTest::sshDn, TulTest::oamCmDn, sysM + ",CliSsh=0",
                 "ManagedElement=1,SystemFunctions=1,SecM=0,Ssh=1"});
}

rc::Gen<std::string> anyDn() {
    return gen::weightedOneOf<std::string>(
        {{3, ownDn()},
         {1, text({sysM, "ManagedElement=1,Transport=1", "ManagedElement=1,Transport=0",
                   "ManagedElement=1,Transport=0,DiffServCategory=OamCM"})}});
}

rc::Gen<std::int64_t> state() {
    return gen::weightedOneOf<std::int64_t>(
        {{1, one<std::int64_t>({0, 1})}, {1, one<std::int64_t>({2, -1, 65536, 65537, 0x100000001, 0x100000000})}});
}

rc::Gen<AttributeValues> numbers(int type, rc::Gen<std::int64_t> value) {
    const auto list =
        gen::weightedOneOf<std::vector<std::int64_t>>({{10, gen::container<std::vector<std::int64_t>>(1, value)},
                                                       {1, gen::container<std::vector<std::int64_t>>(2, value)},
                                                       {1, gen::just(std::vector<std::int64_t>{})}});
    return gen::map(list, [type](std::vector<std::int64_t> values) {
        return AttributeValues{TulOamSpiMoAttributeType_3{type}, std::move(values), {}};
    });
}

/** A list of the wrong type holds numbers, so that nobody can take them for texts unseen. */
rc::Gen<AttributeValues> algorithms() {
    const auto lists = some(4, text({"aes128-ctr", "aes256-ctr", "a", "", "x y", "curve25519@libssh.org", "100%s"}));
    const auto strings = gen::map(lists, [](Texts values) { return TulTest::strings(values); });
    return gen::weightedOneOf<AttributeValues>({{8, strings}, {1, numbers(7, state())}, {1, numbers(12, state())}});
}

rc::Gen<AttributeIs> stateOf(Texts dns) {
    return gen::construct<AttributeIs>(
        text(std::move(dns)), gen::just<std::string>("administrativeState"),
        gen::weightedOneOf<AttributeValues>(
            {{8, numbers(12, gen::weightedOneOf<std::int64_t>({{2, one<std::int64_t>({1, 0})}, {1, state()}}))},
             {1, numbers(3, state())},
             {1, numbers(13, state())}}));
}

rc::Gen<AttributeIs> dscpOf(Texts dns) {
    return gen::construct<AttributeIs>(
        text(std::move(dns)), gen::just<std::string>("dscp"),
        gen::weightedOneOf<AttributeValues>(
            {{8, numbers(5, one<std::int64_t>({46, 0, 10, 255, 302}))}, {1, numbers(6, state())}}));
}

rc::Gen<AttributeIs> algorithmsOf(Texts dns) {
    return gen::construct<AttributeIs>(
        text(std::move(dns)), text({"selectedCiphers", "selectedKeyExchanges", "selectedMacs"}), algorithms());
}

rc::Gen<Command> attributeIs() {
    return gen::weightedOneOf<Command>(
        {{4, command(stateOf({TulTest::cliSshDn, TulTest::netconfSshDn, sysM + ",CliSsh=0"}))},
         {2, command(dscpOf({TulTest::oamCmDn, "ManagedElement=1,Transport=0,DiffServCategory=OamCM"}))},
         {6, command(algorithmsOf({TulTest::sshDn, "ManagedElement=1,SystemFunctions=1,SecM=0,Ssh=1"}))}});
}

rc::Gen<Command> attributeVanishes() {
    return command(gen::construct<AttributeVanishes>(
        ownDn(), text({"administrativeState", "dscp", "selectedCiphers", "selectedMacs"})));
}

rc::Gen<Command> nodeChanges() {
    return gen::weightedOneOf<Command>({{9, attributeIs()},
                                        {2, attributeVanishes()},
                                        {2, command(gen::construct<MoAppears>(anyDn()))},
                                        {3, command(gen::construct<MoVanishes>(anyDn()))}});
}

// Notifications

rc::Gen<std::optional<std::string>> orNull(std::size_t present, rc::Gen<std::string> generator) {
    const auto there = gen::map(std::move(generator), [](std::string value) { return std::optional(value); });
    return gen::weightedOneOf<std::optional<std::string>>(
        {{present, there}, {1, gen::just(std::optional<std::string>())}});
}

rc::Gen<EventAttribute> eventAttribute() {
    return gen::construct<EventAttribute>(
        orNull(30, gen::weightedOneOf<std::string>(
                       {{6, gen::just<std::string>("administrativeState")},
                        {1, text({"AdministrativeState", "administrativeStates", "cliSshId", "dscp", ""})}})),
        gen::weightedOneOf<int>({{12, gen::just(12)}, {1, one<int>({3, 0, -12, 13, 10, 0x7fffffff})}}),
        gen::weightedElement<unsigned>({{10, 1U}, {1, 0U}, {1, 3U}}),
        gen::weightedOneOf<std::int64_t>({{2, one<std::int64_t>({0, 1})}, {1, state()}}),
        gen::weightedElement<bool>({{15, true}, {1, false}}));
}

rc::Gen<int> eventType() {
    return gen::weightedOneOf<int>({{6, gen::just(3)}, {3, one<int>({1, 2})}, {1, one<int>({0, 4, -1, 77})}});
}

rc::Gen<Event> event(rc::Gen<std::optional<std::string>> dn) {
    return gen::construct<Event>(eventType(), std::move(dn), gen::weightedElement<bool>({{20, true}, {1, false}}),
                                 some(3, eventAttribute()));
}

/** What is a DN of the consumer, and what only looks like one. */
rc::Gen<std::optional<std::string>> dnFor(std::size_t consumer) {
    const auto wrong = text({"", "OamCMx", "oamCM", "x=OamCM,y=1", "a\nOamCM", "OamCM\n", "100%s"});
    const auto right =
        text({TulTest::oamCmDn, "ManagedElement=1,Transport=0,DiffServCategory=OamCM", "OamCM", "xOamCM"});
    if (consumer == 2) {
        return orNull(8, gen::weightedOneOf<std::string>({{3, right}, {1, wrong}}));
    }
    // The framework must give the fourth one a DN.
    const auto any = gen::weightedOneOf<std::string>({{5, ownDn()}, {1, wrong}});
    return consumer == 3 ? gen::map(any, [](std::string dn) { return std::optional(dn); }) : orNull(8, any);
}

rc::Gen<Command> notify(std::size_t consumer) {
    return command(gen::construct<Notify>(gen::just(consumer), gen::weightedElement<bool>({{30, true}, {1, false}}),
                                          some(4, event(dnFor(consumer)))));
}

// The framework and the adapter

rc::Gen<Command> spiFails() {
    const auto operation =
        text({"createMo", "newTransaction", "commit", "deleteMo", "deleteMo", "findInstances", "getAttribute",
              "getInterface TulOamSpiManagedObject", "getInterface TulOamSpiTransactionMaster", "registerComponent",
              "removeSubscription", "unregisterConsumer", "registerConsumer", "addSubscription"});
    const auto after = gen::weightedOneOf<unsigned>({{1, gen::just(0U)}, {1, below(9U)}});
    return command(gen::construct<SpiFails>(operation, after, one<unsigned>({1, 2, 1000}),
                                            one<BryReturnT>({-1, -4, -7, 5, -2, -8, 1, 0, 0x7fffffff})));
}

rc::Gen<std::string> revisionText() {
    Texts all;
    for (const RevisionSpelling& spelling : revisionSpellings) {
        all.emplace_back(spelling.text);
    }
    return gen::weightedOneOf<std::string>({{1, text({"1.8.0\n", "1.7.0\n"})}, {2, text(all)}});
}

rc::Gen<AdapterDoes> adapterFails(rc::Gen<std::string> word) {
    return gen::construct<AdapterDoes>(
        std::move(word), one<Ending>({Ending::TUL_EXCEPTION, Ending::STANDARD_EXCEPTION, Ending::INTEGER}),
        text({"Script vorma failed with exit code 1", "Script vorma did not end within 30000 ms", "100%s", ""}));
}

rc::Gen<AdapterDoes> adapterPrints(rc::Gen<std::string> word, rc::Gen<std::string> output) {
    return gen::construct<AdapterDoes>(std::move(word), gen::just(Ending::PRINTS), std::move(output));
}

rc::Gen<AdapterDoes> revisionIs() {
    return adapterPrints(gen::just<std::string>("spi-revision"), revisionText());
}

rc::Gen<Command> adapterDoes() {
    const auto settings = text({"ssh", "clissh", "netconfssh"});
    return command(gen::weightedOneOf<AdapterDoes>({{3, adapterPrints(settings, text({"", "done\n"}))},
                                                    {3, adapterFails(settings)},
                                                    {2, revisionIs()},
                                                    {1, adapterFails(gen::just<std::string>("spi-revision"))}}));
}

rc::Gen<Command> logLevelIs() {
    return command(gen::construct<LogLevelIs>(one<int>({6, 8, 4, 3, 0})));
}

// Sequences

using Commands = std::vector<Command>;

rc::Gen<Commands> alone(rc::Gen<Command> generator) {
    return gen::map(std::move(generator), [](Command only) { return Commands{std::move(only)}; });
}

rc::Gen<Commands> initAndStart() {
    return gen::map(init(200), [](Command init) { return Commands{std::move(init), {Start{}}}; });
}

rc::Gen<Commands> opening() {
    return gen::weightedOneOf<Commands>({{6, initAndStart()},
                                         {2, alone(init(80))},
                                         {2, alone(plain<Start>())},
                                         {5, alone(nodeChanges())},
                                         {3, alone(command(algorithmsOf({TulTest::sshDn})))},
                                         {3, alone(command(revisionIs()))},
                                         {1, alone(command(adapterFails(gen::just<std::string>("spi-revision"))))},
                                         {2, alone(adapterDoes())},
                                         {3, alone(spiFails())}});
}

rc::Gen<Commands> anything() {
    return alone(gen::weightedOneOf<Command>({{13, plain<Start>()},
                                              {7, plain<Stop>()},
                                              {4, plain<Terminate>()},
                                              {6, init(40)},
                                              {8, notify(0)},
                                              {8, notify(1)},
                                              {10, notify(2)},
                                              {8, notify(3)},
                                              {15, nodeChanges()},
                                              {8, adapterDoes()},
                                              {8, spiFails()},
                                              {2, logLevelIs()}}));
}

/** Two that are worth more together, the second of which often fails: a running component is given other values. */
rc::Gen<Commands> reload() {
    return gen::map(init(5), [](Command init) { return Commands{{Terminate{}}, std::move(init)}; });
}

Sequence joined(const std::pair<std::vector<Commands>, std::vector<Commands>>& parts) {
    Sequence sequence;
    for (const std::vector<Commands>* part : {&parts.first, &parts.second}) {
        for (const Commands& commands : *part) {
            sequence.commands.insert(sequence.commands.end(), commands.begin(), commands.end());
        }
    }
    return sequence;
}

}  // namespace

rc::Gen<Sequence> sequences() {
    static const rc::Gen<Sequence> all =
        gen::map(gen::pair(some(openingLength, opening()),
                           some(mainLength, gen::weightedOneOf<Commands>({{24, anything()}, {1, reload()}}))),
                 joined);
    return all;
}

}  // namespace Sequences
