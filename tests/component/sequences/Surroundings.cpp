#include "Surroundings.h"

namespace Sequences {

Surroundings::Surroundings() {
    for (const char* dn :
         {"ManagedElement=1", "ManagedElement=1,SystemFunctions=1", "ManagedElement=1,SystemFunctions=1,SysM=1",
          "ManagedElement=1,SystemFunctions=1,SecM=1", "ManagedElement=1,Transport=1"}) {
        change(MoAppears{dn});
    }
    for (const char* word : {"clissh", "netconfssh", "ssh"}) {
        change(AdapterDoes{word, Ending::PRINTS, ""});
    }
    change(AdapterDoes{"spi-revision", Ending::PRINTS, "1.8.0\n"});
}

void Surroundings::change(const AttributeVanishes& attribute) {
    const auto mo = mos.find(attribute.dn);
    if (mo != mos.end()) {
        mo->second.erase(attribute.name);
    }
}

std::optional<BryReturnT> Surroundings::failureOf(const std::string& operation) {
    const auto found = _faults.find(operation);
    if (found == _faults.end()) {
        return std::nullopt;
    }
    SpiFails& fault = found->second;
    if (fault.after > 0) {
        --fault.after;
        return std::nullopt;
    }
    if (fault.times == 0) {
        return std::nullopt;
    }
    --fault.times;
    return fault.code;
}

}  // namespace Sequences
