#include "ModelCommands.h"

#include <algorithm>
#include <span>
#include <utility>

#include "ModelText.h"
#include "Refusal.h"
#include "Schema.h"
#include "Services.h"
#include "Text.h"

namespace TulNode {

namespace {

bool isDn(const std::string& text) {
    return text.find('=') != std::string::npos;
}

}  // namespace

std::vector<Command> ModelCommands::commands() {
    std::vector<Command> all = table();
    for (Command& command : all) {
        command.run = [this, run = std::move(command.run)](const Words& given) {
            try {
                run(given);
            } catch (const Refusal& refusal) {
                // The transaction of `begin` is gone then, and must not stand in the way of the next command.
                _open = refusal.code() == BRY_TIMED_OUT ? 0 : _open;
                throw;
            }
        };
    }
    return all;
}

std::vector<Command> ModelCommands::table() {
    const auto existing = [this](const Words& given) { return given.empty() ? names() : Words{}; };
    const auto existingThenAttributes = [this](const Words& given) {
        return given.empty() ? names() : attributesOf(given[0]);
    };
    const auto newThenAttributes = [this](const Words& given) {
        return given.empty() ? namesToCreate() : attributesOf(given[0]);
    };
    return {
        {"show", "[DN|CLASS]", "Shows the tree of all MOs, or one MO with its attributes.", 0, 1,
         [this](const Words& given) { show(given); }, existing},
        {"set", "DN|CLASS attribute=value ...",
         "Sets attributes; values of a sequence have commas between them, nothing behind the = takes the value away.",
         2, anyNumber, [this](const Words& given) { set(given); }, existingThenAttributes},
        {"create", "DN [attribute=value ...]", "Creates an MO.", 1, anyNumber,
         [this](const Words& given) { create(given); }, newThenAttributes},
        {"delete", "DN|CLASS", "Deletes an MO that has none below it.", 1, 1,
         [this](const Words& given) { remove(given); }, existing},
        {"lock", "DN|CLASS", "Sets administrativeState to LOCKED.", 1, 1,
         [this](const Words& given) { setState(given[0], "LOCKED"); }, existing},
        {"unlock", "DN|CLASS", "Sets administrativeState to UNLOCKED.", 1, 1,
         [this](const Words& given) { setState(given[0], "UNLOCKED"); }, existing},
        {"begin", "[shared|exclusive]", "Opens a transaction: the changes that follow wait until commit.", 0, 1,
         [this](const Words& given) { begin(given); },
         [](const Words&) {
             return Words{"shared", "exclusive"};
         }},
        {"commit", "", "Puts the changes since begin in force.", 0, 0, [this](const Words&) { commit(); }, nullptr},
        {"abort", "", "Drops the changes since begin.", 0, 0, [this](const Words&) { abort(); }, nullptr},
    };
}

/** A class name alone stands for its MO when there is just one. */
std::string ModelCommands::resolve(const std::string& dnOrClass) {
    if (isDn(dnOrClass)) {
        return Dn(dnOrClass).text();
    }
    const ClassDefinition& definition = classDefinition(dnOrClass);
    const Words found = _transactions.instances(_open, classPath(definition));
    if (found.size() != 1) {
        throw Refusal(BRY_NOT_FOUND, "there " + std::string(found.empty() ? "is no MO" : "are several MOs") +
                                         " of the class " + definition.name +
                                         (found.empty() ? "" : "; name one by its DN"));
    }
    return found[0];
}

void ModelCommands::change(const std::function<void(TransactionMaster::Handle)>& change) {
    if (_open != 0) {
        change(_open);
        return;
    }
    const TransactionMaster::Handle handle =
        _transactions.open(TUL_LOCK_POLICY_SHARED, commandTimeout, ownerOperator);
    try {
        change(handle);
        _transactions.commit(handle);
    } catch (const std::runtime_error&) {
        _transactions.abort(handle);
        throw;
    }
}

void ModelCommands::show(const Words& arguments) {
    if (arguments.empty()) {
        showTree();
        return;
    }
    const std::string dn = resolve(arguments[0]);
    const Dn::Part last = Dn(dn).last();
    Attributes attributes = _transactions.get(_open, dn);
    const ClassDefinition& definition = classDefinition(last.className);
    _output.line(dn);
    _output.line("  " + definition.keyAttribute + "=" + last.key);
    for (const AttributeDefinition& attribute : definition.attributes) {
        _output.line("  " + formatAttribute(attribute, attributes[attribute.name]));
    }
}

void ModelCommands::showTree() {
    for (const std::string& text : _transactions.all(_open)) {
        const Dn dn(text);
        const ClassDefinition& definition = classDefinition(dn.last().className);
        std::string line = std::string(2 * (dn.depth() - 1), ' ') + dn.last().className + "=" + dn.last().key;
        for (const auto& [name, value] : _transactions.get(_open, text)) {
            line += " " + formatAttribute(definition.attribute(name), value);
        }
        _output.line(line);
    }
}

void ModelCommands::set(const Words& arguments) {
    const std::string dn = resolve(arguments[0]);
    const ClassDefinition& definition = classDefinition(Dn(dn).last().className);
    const Attributes attributes = parseAttributes(definition, std::span(arguments).subspan(1));
    change([&](TransactionMaster::Handle handle) { _transactions.set(handle, dn, attributes); });
}

void ModelCommands::create(const Words& arguments) {
    const Dn dn(arguments[0]);
    const ClassDefinition& definition = classDefinition(dn.last().className);
    const Attributes attributes = parseAttributes(definition, std::span(arguments).subspan(1));
    change([&](TransactionMaster::Handle handle) { _transactions.create(handle, dn.text(), attributes); });
}

void ModelCommands::remove(const Words& arguments) {
    const std::string dn = resolve(arguments[0]);
    change([&](TransactionMaster::Handle handle) { _transactions.remove(handle, dn); });
}

void ModelCommands::setState(const std::string& what, const std::string& state) {
    set({what, "administrativeState=" + state});
}

void ModelCommands::begin(const Words& arguments) {
    if (_open != 0) {
        throw Refusal(BRY_ALREADY_EXISTS, "a transaction is open already; commit or abort it first");
    }
    const std::string policy = arguments.empty() ? "shared" : arguments[0];
    if (policy != "shared" && policy != "exclusive") {
        throw Refusal(BRY_INVALID_ARGUMENT,
                      "\"" + escape(policy) + "\" is no lock policy; allowed: shared or exclusive");
    }
    _open = _transactions.open(policy == "shared" ? TUL_LOCK_POLICY_SHARED : TUL_LOCK_POLICY_EXCLUSIVE,
                               operatorTimeout, ownerOperator);
}

void ModelCommands::commit() {
    if (_open == 0) {
        throw Refusal(BRY_INVALID_HANDLE, "no transaction is open; begin opens one");
    }
    _transactions.commit(_open);
    _open = 0;
}

void ModelCommands::abort() {
    if (_open == 0) {
        throw Refusal(BRY_INVALID_HANDLE, "no transaction is open; begin opens one");
    }
    const TransactionMaster::Handle handle = std::exchange(_open, 0);
    _transactions.abort(handle);
}

Words ModelCommands::names() {
    Words result = _transactions.all(_open);
    for (const ClassDefinition& definition : model()) {
        result.push_back(definition.name);
    }
    return result;
}

Words ModelCommands::namesToCreate() {
    Words result;
    for (const std::string& dn : _transactions.all(_open)) {
        for (const ClassDefinition& definition : model()) {
            if (definition.parent == Dn(dn).last().className) {
                result.push_back(dn + "," + definition.name + "=");
            }
        }
    }
    return result;
}

Words ModelCommands::attributesOf(const std::string& dnOrClass) {
    Words result;
    const std::string className = isDn(dnOrClass) ? Dn(dnOrClass).last().className : dnOrClass;
    for (const AttributeDefinition& attribute : classDefinition(className).attributes) {
        if (attribute.literals.empty()) {
            result.push_back(attribute.name + "=");
        }
        for (const std::string& literal : attribute.literals) {
            result.push_back(attribute.name + "=" + literal);
        }
    }
    return result;
}

}  // namespace TulNode
