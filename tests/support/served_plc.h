#ifndef TESTS_SUPPORT_SERVED_PLC_H
#define TESTS_SUPPORT_SERVED_PLC_H

#include "support/held_port.h"
#include "support/memory_plc.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A PLC on a port of its own, which a thread serves: it has one connection at a time, keeps a record of what it gets,
/// and holds back, refuses or ignores what a test tells it to. Every function may be called on any thread. Waits throw
/// std::runtime_error after 20 s.
class ServedPlc {
public:
    struct Request {
        unsigned command; // command code; 0: the exchange of node addresses
        unsigned area;
        int      address;
        int      count;
        Bytes    data;    // of a write
        unsigned sid;     // service ID

        bool isRead() const { return command == 0x0101; }
        bool isWrite() const { return command == 0x0102; }
        bool isModeChange() const { return command == 0x0401; }
    };

    /// What becomes of a request.
    struct Treatment {
        enum Deed {
            ANSWER,
            HOLD,    // until release()
            SILENCE, // it is carried out, and not answered
            LOSE,    // neither carried out nor answered
            FORGET,  // a write is acknowledged, and not carried out
            HANG_UP
        };
        Deed     deed    = ANSWER;
        unsigned endCode = 0; // other than 0: refuses
    };
    using Rule = std::function<Treatment(const Request &)>;

    ServedPlc();
    ~ServedPlc();
    ServedPlc(const ServedPlc &) = delete;
    ServedPlc &operator=(const ServedPlc &) = delete;

    std::string host() const { return port_.host(); }
    int port() const { return port_.number(); }

    /// From now on `rule` decides, on the thread that serves; null: everything is answered.
    void rule(Rule rule);

    /// Everything is held back from now on.
    void holdAll();

    /// Answers what was held back, and everything from now on.
    void release();

    /// Ends the connection.
    void hangUp();

    /// Connections are refused from now on; the one that is made stands.
    void stopListening();
    void startListening();

    /// Words of DM.
    void set(int address, const std::vector<int> &values);
    int  dm(int address);

    /// What is answered to a command that is not about memory, behind the end code.
    void tell(unsigned command, const Bytes &data);

    /// As if the PLC's program was in RUN mode: writes are refused until the mode is changed.
    void enterRunMode();

    std::vector<Request> requests() const;
    std::vector<Request> writes() const;
    int connections() const;
    int ends() const; // of connections, by the other side
    int modeChanges() const;

    /// Waits until a request is held back.
    void awaitHeld();

    /// Waits until the reply to a request that comes from now on was dealt with: another one has come since.
    void awaitRound();

    void awaitConnections(int count);
    void awaitEnds(int count);
    void awaitWrites(std::size_t count);
    void awaitModeChanges(int count);

private:
    void run();
    void serve();
    void accept();
    void receive();
    void hangUpNow();
    void take(const Bytes &frame);
    void send(const Bytes &reply);
    void perform(const std::function<void()> &job);
    Bytes answerTo(const Bytes &frame, const Request &request, Treatment::Deed deed, unsigned endCode);

    template <typename Condition>
    void await(const char *what, Condition condition) const;

    const HeldPort port_;
    mutable std::mutex              mutex_; // guards all that follows
    mutable std::condition_variable changed_;
    MemoryPlc            plc_;
    Rule                 rule_;
    std::deque<Bytes>    held_;
    std::vector<Request> requests_;
    std::deque<std::function<void()>> jobs_; // for the thread
    Bytes                received_;
    int                  connections_ = 0;
    int                  ends_        = 0;
    bool                 isEnding_    = false;
    std::string          problem_; // a request that no PLC would understand
    int                  wake_;
    int                  listener_;
    int                  connection_ = -1;
    std::thread          thread_;
};

#endif
