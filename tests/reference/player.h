#ifndef TESTS_REFERENCE_PLAYER_H
#define TESTS_REFERENCE_PLAYER_H

#include "operation.h"

// A panel runtime and a PLC around one driver. They play the operations of a sequence and write down everything that
// can be seen of the driver.

namespace reference {

class Player {
public:
    Player(AnyDriver &driver, const RuntimeMemory &memory, int nesting);

    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    /// Plays one operation. Returns what was seen: results, texts, frames, values, and the callbacks in order.
    Text play(const Operation &operation);

private:
    void onChange(Int stationNo, Int requestTag, const Text &regType, Int address);

    void initialise(const Operation &operation);
    void watch(const Operation &operation);
    void planRecipe(const Operation &operation);
    void readOnCondition(const Operation &operation);
    void write(const Operation &operation);
    void send();
    void reply(const Operation &operation);
    void checkAddress(const Operation &operation);
    void copies(const Operation &operation);
    void lists(const Operation &operation);
    void read(const char *what, Int tag, const Text &type, Int address, Int count);

    void see(const char *what, std::initializer_list<Int> values);
    void seeText(const char *what, const Text &text);
    void seeBytes(const char *what, const Byte *bytes, std::size_t count);
    void seeItem(const KeyAddress &item);
    void seeMutex();

    AnyDriver    &driver_;
    RuntimeMemory memory_;
    int           nesting_;
    Int           calls_ = 0; // of the callback
    Frame         inFlight_;
    Text          seen_;
};

/// The reply of the given kind to a request.
Bytes makeReply(const Frame &request, Reply kind, std::uint32_t noise);

} // namespace reference

#endif
