#include "Prompt.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "Text.h"

namespace TulNode {

namespace {

constexpr int historyLength = 500;
constexpr const char* clearLine = "\r\033[K";

std::string commonBeginning(const std::vector<std::string>& words) {
    std::string common = words.front();
    for (const std::string& word : words) {
        const auto [end, ignored] = std::mismatch(common.begin(), common.end(), word.begin(), word.end());
        common.erase(end, common.end());
    }
    return common;
}

}  // namespace

Prompt::Prompt(const Shell& shell, Output& output, int wakeUp)
    : _shell(shell),
      _output(output),
      _wakeUp(wakeUp),
      _arrival(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      _history(history_init()),
      _editor(el_init("tul-node", stdin, stdout, stderr)) {
    if (!_editor || !_history || _arrival < 0) {
        throw std::runtime_error("the terminal cannot be used for a prompt; give the commands through a pipe");
    }
    HistEvent event;
    history(_history.get(), &event, H_SETSIZE, historyLength);
    history(_history.get(), &event, H_SETUNIQUE, 1);
    el_set(_editor.get(), EL_CLIENTDATA, this);
    el_set(
        _editor.get(), EL_PROMPT, +[](EditLine*) {
            static std::array<char, 11> text{"tul-node> "};
            return text.data();
        });
    el_set(_editor.get(), EL_EDITOR, "emacs");
    el_set(_editor.get(), EL_SIGNAL, 0);
    el_set(_editor.get(), EL_HIST, history, _history.get());
    el_set(_editor.get(), EL_GETCFN, readCharacter);
    // The narrow form leaks the two texts.
    el_wset(_editor.get(), EL_ADDFN, L"complete-word", L"Completes the word", complete);
    el_set(_editor.get(), EL_BIND, "^I", "complete-word", nullptr);
    _output.divert([this](const std::string& line) { return takeOver(line); });
}

Prompt::~Prompt() {
    _output.divert(nullptr);
    close(_arrival);
}

std::optional<std::string> Prompt::next() {
    {
        const std::lock_guard lock(_mutex);
        _typing = true;
    }
    int length = 0;
    const char* line = el_gets(_editor.get(), &length);
    {
        const std::lock_guard lock(_mutex);
        _typing = false;
    }
    if (line == nullptr || length <= 0) {
        std::puts("");
        showArrived();
        return std::nullopt;
    }
    showArrived();
    std::string text(line, static_cast<std::size_t>(length));
    text.erase(text.find_last_not_of("\r\n") + 1);
    if (!text.empty()) {
        HistEvent event;
        history(_history.get(), &event, H_ENTER, text.c_str());
    }
    return text;
}

/** Other threads must not draw while the editor does: what they print is shown by showArrived(). */
bool Prompt::takeOver(const std::string& line) {
    const std::lock_guard lock(_mutex);
    if (_typing) {
        _arrived.push_back(line);
        eventfd_write(_arrival, 1);
    }
    return _typing;
}

void Prompt::showArrived() {
    const std::lock_guard lock(_mutex);
    eventfd_t ignored = 0;
    eventfd_read(_arrival, &ignored);
    for (const std::string& line : std::exchange(_arrived, {})) {
        std::printf("%s%s\n", clearLine, line.c_str());
    }
    std::fflush(stdout);
}

int Prompt::readCharacter(EditLine* editor, wchar_t* character) {
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return static_cast<Prompt*>(self)->waitForCharacter(character);
}

int Prompt::waitForCharacter(wchar_t* character) {
    for (;;) {
        std::array<pollfd, 3> sources{pollfd{_wakeUp, POLLIN, 0}, {_arrival, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        const int ready = poll(sources.data(), sources.size(), -1);
        if ((ready < 0 && errno != EINTR) || sources[0].revents != 0) {
            return 0;
        }
        if (ready > 0 && sources[1].revents != 0) {
            showArrived();
            el_set(_editor.get(), EL_REFRESH);
        } else if (ready > 0) {
            unsigned char byte = 0;
            const ssize_t count = read(STDIN_FILENO, &byte, 1);
            *character = static_cast<wchar_t>(byte);
            return count == 1 ? 1 : 0;
        }
    }
}

unsigned char Prompt::complete(EditLine* editor, int /*key*/) {
    void* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return static_cast<Prompt*>(self)->completeWord();
}

unsigned char Prompt::completeWord() {
    const LineInfo* line = el_line(_editor.get());
    const std::string text(line->buffer, line->cursor);
    const std::vector<std::string> words = _shell.completions(text);
    if (words.empty()) {
        return CC_ERROR;
    }
    const std::size_t begun = text.size() - (text.find_last_of(" \t") + 1);
    std::string rest = commonBeginning(words).substr(begun);
    if (words.size() == 1 && !words.front().ends_with('=')) {
        rest += ' ';
    }
    if (!rest.empty()) {
        el_insertstr(_editor.get(), rest.c_str());
        return CC_REFRESH;
    }
    std::printf("\n%s\n", join(words, "\n").c_str());
    return CC_REDISPLAY;
}

}  // namespace TulNode
