/*
 * A started component, notifications of every kind, and a framework and an adapter that answer in every way.
 *
 * An input is a text: four letters that say how the node is (Setup), then steps. Unknown letters between the steps
 * are skipped, so blanks and line ends may stand anywhere there.
 *
 *   +DN *DN -DN ?TDN       an event: created, changed, deleted, or of the type T; DN as in Draft.cpp
 *   aNTCV                  an attribute of the newest event: name, type, count, value; as in Draft.cpp
 *   A                      the newest event has no attribute array
 *   Z                      the notification has no event array
 *   !1 !2 !3 !4            delivers to CliSsh, NetconfSsh, the service category, Ssh; begins a new notification
 *   rX mX                  the next run, the next answer of the model is X; as in Answers.h and Model.cpp
 */

#include "FuzzedNode.h"
#include "Target.h"

namespace {

using namespace TulFuzz;

bool addEvent(char step, Draft& draft, Letters& letters) {
    switch (step) {
        case '+':
            draft.addEvent(CREATED, letters);
            return true;
        case '*':
            draft.addEvent(ATTRIBUTES_CHANGED, letters);
            return true;
        case '-':
            draft.addEvent(DELETED, letters);
            return true;
        case '?':
            draft.addEvent(static_cast<CmEventType>(letters.take()), letters);
            return true;
        default:
            return false;
    }
}

void addDetail(char step, Draft& draft, Letters& letters) {
    switch (step) {
        case 'a':
            draft.addAttribute(letters);
            break;
        case 'A':
            draft.dropAttributeArray();
            break;
        case 'Z':
            draft.dropEventArray();
            break;
        default:
            break;
    }
}

void play(FuzzedNode& node, Letters& letters) {
    auto draft = std::make_unique<Draft>();
    while (!letters.atEnd()) {
        const char step = letters.take();
        if (step == '!') {
            node.deliver(static_cast<std::size_t>(letters.take() - '1') & 3, *draft);
            draft = std::make_unique<Draft>();
        } else if (step == 'r') {
            node.adapterAnswers().add(letters.take());
        } else if (step == 'm') {
            node.modelAnswers().add(letters.take());
        } else if (!addEvent(step, *draft, letters)) {
            addDetail(step, *draft, letters);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Letters letters({reinterpret_cast<const char*>(data), size});
    FuzzedNode node(Setup::take(letters));
    node.start();
    play(node, letters);
    node.stop();
    return 0;
}
