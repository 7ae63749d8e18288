#include "Model.h"

#include <algorithm>

namespace TulFuzz {

/** Made anew for each read, so that a sanitizer sees it used after it was given back. */
struct Model::Container : TulMoAttributeValueContainer_3 {
    explicit Container(Model& owner) : TulMoAttributeValueContainer_3{}, model(owner) {}

    Model& model;
    std::vector<TulMoAttributeValue_3> storage;
    std::string text;
};

Model::Model(FuzzFramework& framework, char cliState, char netconfState)
    : _cliState(cliState), _netconfState(netconfState) {
    framework.onFindInstances = [this](const std::string& classPath, TulOamSpiMoVisitor_3 visitor, void* context) {
        return find(classPath, visitor, context);
    };
    framework.onGetAttribute = [this](const std::string& dn, const std::string& attributeName,
                                      TulMoAttributeValueResult_3& result) {
        return read(dn, attributeName, result);
    };
}

Model::~Model() = default;

char Model::stateOf(const std::string& dn) const {
    return dn.find("CliSsh") != std::string::npos ? _cliState : _netconfState;
}

BryReturnT Model::find(const std::string& classPath, TulOamSpiMoVisitor_3 visitor, void* context) {
    const char letter = answers.next();
    const bool ours = classPath.ends_with("CliSsh") || classPath.ends_with("NetconfSsh");
    if (letter == 'e') {
        return BRY_NOT_FOUND;
    }
    if (letter == 'n' || (ours && stateOf(classPath) == 'n')) {
        return BRY_OK;
    }
    const bool more = visitor(context, letter == 'N' ? nullptr : classPath.c_str());  // it serves as a DN as well
    if (more || letter == '2') {
        visitor(context, "Second=1");
    }
    return BRY_OK;
}

std::unique_ptr<Model::Container> Model::containerOf(const std::string& dn, const std::string& attributeName) {
    auto container = std::make_unique<Container>(*this);
    if (attributeName == "administrativeState") {
        container->type = TUL_MO_TYPE_ENUMERATION_3;
        container->storage = {TulMoAttributeValue_3{.asInt64 = stateOf(dn) - '0'}};
    } else if (attributeName == "dscp") {
        container->type = TUL_MO_TYPE_UINT8_3;
        container->storage = {TulMoAttributeValue_3{.asUint64 = 46}};
    } else {
        container->type = TUL_MO_TYPE_STRING_3;
        container->text = "algorithm@" + attributeName;
        container->storage.assign(2, TulMoAttributeValue_3{.asString = container->text.c_str()});
    }
    container->values = container->storage.data();
    container->nrOfValues = static_cast<std::uint32_t>(container->storage.size());
    return container;
}

/** '0' no values, 'v' null values, 't' another type, 's' null texts or 0, 'd' twice as many values. */
void Model::spoil(Container& container, char letter) {
    switch (letter) {
        case '0':
            container.nrOfValues = 0;
            break;
        case 'v':
            container.values = nullptr;
            break;
        case 't':
            container.type = TUL_MO_TYPE_INT64_3;
            break;
        case 's':
            std::fill(container.storage.begin(), container.storage.end(), TulMoAttributeValue_3{.asString = nullptr});
            break;
        case 'd':
            container.storage.resize(2 * container.storage.size());
            container.values = container.storage.data();
            container.nrOfValues = static_cast<std::uint32_t>(container.storage.size());
            break;
        default:
            break;
    }
}

/** Besides what spoils a container: 'e' an error, 'n' no container, 'r' one that cannot be given back. */
BryReturnT Model::read(const std::string& dn, const std::string& attributeName, TulMoAttributeValueResult_3& result) {
    const char letter = answers.next();
    if (letter == 'e' || (attributeName == "administrativeState" && stateOf(dn) == 'e')) {
        return BRY_NOT_FOUND;
    }
    if (letter == 'n') {
        return BRY_OK;
    }
    std::unique_ptr<Container> container = containerOf(dn, attributeName);
    spoil(*container, letter);
    if (letter == 'r') {
        result = {nullptr, container.get()};
        _kept.push_back(std::move(container));
    } else {
        ++_outstanding;
        result = {release, container.release()};
    }
    return BRY_OK;
}

void Model::release(TulMoAttributeValueContainer_3* container) {
    const std::unique_ptr<Container> given(static_cast<Container*>(container));
    --given->model._outstanding;
}

}  // namespace TulFuzz
