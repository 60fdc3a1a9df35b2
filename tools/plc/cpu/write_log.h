#ifndef PLC_CPU_WRITE_LOG_H
#define PLC_CPU_WRITE_LOG_H

#include "cpu/memory.h"

#include <algorithm>
#include <chrono>
#include <deque>

// The places that were written last, each once, the newest first, and what was written, which a plant may have changed
// since.

namespace plc {

class WriteLog {
public:
    using Clock = std::chrono::steady_clock;

    struct Entry {
        Span              place; // one item
        unsigned          value;
        Clock::time_point time;
    };

    enum : std::size_t { ENTRIES_MAX = 64 };

    /// Notes every item of the span, which `memory` holds already, the first one being shown first; of a long span
    /// only what can be kept.
    void add(const Span &span, const Memory &memory)
    {
        const Clock::time_point now = Clock::now();
        for (unsigned i = std::min<unsigned>(span.count, ENTRIES_MAX); i > 0; --i) {
            Span item = span;
            item.first += i - 1;
            item.count = 1;
            const auto isSame = [&item](const Entry &entry) {
                return entry.place.area == item.area && entry.place.access == item.access &&
                       entry.place.first == item.first;
            };
            noted.erase(std::remove_if(noted.begin(), noted.end(), isSame), noted.end());
            noted.push_front({item, memory.get(item, 0), now});
        }
        if (noted.size() > ENTRIES_MAX)
            noted.resize(ENTRIES_MAX);
    }

    const std::deque<Entry> &entries() const { return noted; }

private:
    std::deque<Entry> noted;
};

} // namespace plc

#endif
