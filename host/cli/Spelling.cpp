#include "cli/Spelling.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "broker/Names.h"

namespace host {
namespace {

// Row by row through the table of distances between the beginnings of both words.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestTo(const std::string& word, const std::vector<std::string>& candidates) {
    std::string nearest;
    std::size_t least = std::min<std::size_t>(3, word.size());
    for (const std::string& candidate : candidates) {
        const std::size_t changes = distance(broker::lowered(word), broker::lowered(candidate));
        if (changes >= least) continue;
        least = changes;
        nearest = candidate;
    }
    return nearest;
}

}  // namespace host
