#ifndef TUL_TEST_STATION_H
#define TUL_TEST_STATION_H

#include <functional>

#include "EventConsumer.h"

namespace TulTest {

/** Subscribes to something that is no configuration change. */
class Station : public Tul::EventConsumer<Station, 1> {
public:
    void onWeather(const char* /*eventType*/, void* /*value*/) {
        if (during) {
            during();
        }
    }

    std::function<void()> during;
};

}  // namespace TulTest

#endif
