// What a search for sensors saw beside the measurements, for whoever asks why one is missing.
#ifndef ZELSENSORS_CHIPLINUX_SURVEY_H
#define ZELSENSORS_CHIPLINUX_SURVEY_H

#include <string>
#include <vector>

struct Survey {
    // A line of libsensors's settings that it could not use.
    struct Mistake {
        std::string file;
        int line = 0;
        std::string text;
    };
    // A feature that no measurement was made of.
    struct Feature {
        std::string name;
        std::string reason;
    };
    struct Chip {
        std::string name;  // libsensors's: lm75-i2c-0-48
        std::string adapter;
        std::string realPath;
        std::vector<Feature> leftOut;
    };

    std::string version;  // of libsensors
    std::vector<Mistake> mistakes;
    std::vector<Chip> chips;  // in the order of the search
};

#endif
