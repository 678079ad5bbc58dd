// The rounds of watch as people read them.
#ifndef ZELSENSORS_FORMAT_WATCHFORMAT_H
#define ZELSENSORS_FORMAT_WATCHFORMAT_H

#include <cstddef>
#include <string>
#include <vector>

#include "health/SensorRounds.h"
#include "text/Charset.h"

namespace host {

// A round, and what is said of it above its sensors.
struct WatchRound {
    Round round;
    std::string head;  // time and number
    std::string note;  // where the readings come from
};

struct WatchStyle {
    Charset charset = Charset::Utf8;
    bool isColoured = false;
};

// A round where nothing is overwritten: all sensors in the round's order, as wide as it gets, and an empty line.
std::string plainRound(const WatchRound& round, const WatchStyle& style);

// What can be seen of a round on a terminal.
struct Picture {
    std::vector<std::string> lines;  // without newlines; escapes in them move the cursor within the line at most
    std::size_t first = 0;           // the first sensor that is shown
    std::size_t room = 0;            // for so many sensors there is room
};

struct PictureSize {
    std::size_t columns = 0;  // 0: not known, as wide as it gets
    std::size_t lines = 0;    // 0: not known, all sensors
};

// Fits the round in, from the sensor `first` on, or less where there would be room left below. Where there is no room
// for all sensors, the worst are the first. What is too wide gets narrower in steps: names are cut; bars shrink and go;
// names are cut further; states go. A number is shown whole or, where its column is as wide as the terminal and still
// too narrow, as "###"; it loses its unit before.
Picture pictureOf(const WatchRound& round, PictureSize size, std::size_t first, const WatchStyle& style);

// The picture as it is drawn over the last one.
std::string drawn(const Picture& picture);

}  // namespace host

#endif
