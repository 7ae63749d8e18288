#ifndef TUL_NODE_PROMPT_H
#define TUL_NODE_PROMPT_H

#include <histedit.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "LineSource.h"
#include "Output.h"
#include "Shell.h"

namespace TulNode {

/**
 * An operator's terminal: editing, history, and completion with the tabulator. Lines that the output gets while the
 * operator types appear above what is typed.
 */
class Prompt : public LineSource {
public:
    /** Reads standard input and draws on standard output. `wakeUp` as for DescriptorLines. */
    Prompt(const Shell& shell, Output& output, int wakeUp);
    ~Prompt() override;

    std::optional<std::string> next() override;

private:
    static int readCharacter(EditLine* editor, wchar_t* character);
    static unsigned char complete(EditLine* editor, int key);

    bool takeOver(const std::string& line);
    void showArrived();
    int waitForCharacter(wchar_t* character);
    unsigned char completeWord();

    struct HistoryEnd {
        void operator()(History* history) const { history_end(history); }
    };
    struct EditorEnd {
        void operator()(EditLine* editor) const { el_end(editor); }
    };

    const Shell& _shell;
    Output& _output;
    int _wakeUp;
    int _arrival; /**< readable when a line arrived */
    std::unique_ptr<History, HistoryEnd> _history;
    std::unique_ptr<EditLine, EditorEnd> _editor;
    std::mutex _mutex;
    bool _typing = false;
    std::vector<std::string> _arrived;
};

}  // namespace TulNode

#endif
