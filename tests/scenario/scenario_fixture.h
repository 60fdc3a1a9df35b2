#ifndef TESTS_SCENARIO_SCENARIO_FIXTURE_H
#define TESTS_SCENARIO_SCENARIO_FIXTURE_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "logged_plc.h"
#include "support/loaded_driver.h"
#include "support/low_memory.h"
#include "transcript.h"

// A panel runtime for the tests: it loads the library afresh for every test, owns what a runtime owns, records the
// change callback and plays the PLC by transcripts or by a LoggedPlc.

enum {
    RUNTIME_BLOCK_SIZE   = 60117, // up to and with the recipe read request
    RECIPE_WRITE_REQUEST = 60115,
    RECIPE_READ_REQUEST  = 60116,
    RECIPE_BUFFER_WORDS  = 600,   // more than a frame holds
    MAX_EXCHANGES        = 5000   // more than any scenario needs before the driver falls silent
};

/// A watched, or conditionally read, address.
struct Watched {
    int         tag;
    const char *regType;
    int         address;
    int         count;
};

/// The node-address exchange; the panel becomes node 0A, the PLC is node 32.
extern const char HANDSHAKE[];

class ScenarioTest : public ::testing::Test {
protected:
    using Lines = std::vector<std::string>;
    using Numbers = std::vector<int>;

    ScenarioTest();
    ~ScenarioTest() override;

    // ---- The runtime's calls ----------------------------------------------------------------------------------------

    /// Unloads and loads the library, and registers the callback.
    void reload();

    void initialise(const std::string &property);

    /// Gets the handshake out of the way with a conditional read, and leaves the driver idle.
    void connect();

    /// Hands over the watched addresses; returns the number of poll blocks.
    int watch(const std::vector<Watched> &addresses);

    void conditionRead(const Watched &item, int dataKind = 0, int requestId = 9);

    void writeWords(int tag, const char *regType, int address, const Numbers &values, int requestId = 5);
    void writeBits(int tag, const char *regType, int address, const Numbers &values, int requestId = 5);

    Numbers words(int tag, const char *regType, int address, int count = 1);
    Numbers bits(int tag, const char *regType, int address, int count = 1);

    // ---- The runtime's communication loop -----------------------------------------------------------------------

    /// Asks for the next request, into `frame`. The runtime's mutex must be free afterwards.
    bool send();

    /// The bytes of `frame` that are to be sent.
    Bytes sent() const;

    /// Hands in a reply; `info` holds its text. The runtime's mutex must be free afterwards.
    int receive(const QByteArray &reply);
    int receive(const Bytes &reply);

    void play(const std::string &transcript);

    /// One request answered by `plc`; false when there is nothing to send.
    bool exchange();

    /// `count` exchanges; fails when the driver falls silent before.
    void exchange(int count);

    /// Exchanges until there is nothing to send; returns their number.
    int exchangeAll();

    /// What the callback reported since the last call: "station tag type address".
    Lines takeChanges();

    LowMemory               block{RUNTIME_BLOCK_SIZE};
    LowMemory               recipe{RECIPE_BUFFER_WORDS * 2, 2};
    LowObject<QMutex>       mutex;
    std::unique_ptr<LoadedDriver> driver;
    std::function<void()>   duringChange;         // runs inside the callback
    bool                    mutexIsTaken = false; // the test holds the mutex: the callback need not find it free
    FRAME_PRO               frame = FRAME_PRO();
    std::string             info;
    LoggedPlc               plc;

    quint8 &flag(int offset) { return block.data()[offset]; }
    int     recipeWord(int index);
    void    setRecipeWord(int index, int value);

private:
    static void onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address);
    void        playStep(const TranscriptStep &step);
    void        expectMutexFree();

    static ScenarioTest *current_;
    Lines                changes_;
};

#endif
