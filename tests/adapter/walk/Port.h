#ifndef TUL_WALK_PORT_H
#define TUL_WALK_PORT_H

#include <set>
#include <string>

#include "Clock.h"

namespace TulTest {

/** What a client meets on a port of loopback. */
struct Answer {
    enum Kind { Refused, Silent, Greeting } kind = Refused;

    /** The algorithms that the listener offers, so as it has read its file: not as the file reads by now. */
    std::string offer;
};

/** Connects, waits for the greeting and the offer until then, and goes. */
Answer ask(int port, Moment end);

/** A listener that greets nobody. */
class Occupation {
public:
    /** std::system_error when the port is taken. */
    explicit Occupation(int port);
    ~Occupation();

    Occupation(const Occupation&) = delete;
    Occupation& operator=(const Occupation&) = delete;

private:
    int _socket;
};

/** Free ports of a range, which must end below those of outgoing connections; each is given to one holder at a time.
 */
class PortSupply {
public:
    PortSupply(int first, int count) : _first(first), _count(count) {}

    /** std::runtime_error when there is none left. */
    int take();
    void giveBack(int port) { _taken.erase(port); }

private:
    const int _first;
    const int _count;
    std::set<int> _taken;
};

}  // namespace TulTest

#endif
