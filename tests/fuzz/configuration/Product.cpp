#include "Reading.h"
#include "SshdConfigHandler.h"

std::vector<TulFuzz::Reading> TulFuzz::readings(const std::string& text, int times) {
    TulSshdManagement::SshdConfigHandler handler;
    std::vector<Reading> all;
    for (int i = 0; i < times; ++i) {
        const int result = handler.readComponentConfiguration(text.c_str());
        all.push_back({result, handler.getSshdManagement(), handler.getCliport(), handler.getNetconfport(),
                       handler.getRenegotiationtime()});
    }
    return all;
}
