#include "fuzz_input.h"
#include "server/session.h"

#include <memory>

// Byte streams of several peers into the simulator, cut anywhere, and the faults that it can be told to show. The
// peers' sockets are left out.

namespace {

enum { PEERS = 3, CLIENTS_MOST = 2, LENGTH_FROM = 8, HEADER = 16, FRAME_MOST = 2028, SERVER_NODE = 1 };

struct Peer {
    explicit Peer(plc::Plc &state) : session(state) {}

    plc::Session        session;
    plc::FrameAssembler assembler;
    std::size_t         waiting = 0; // bytes given and not yet taken as frames
};

/// Frames, each as long as its header says, unless a fault shortened or lengthened them. Only the last answer of a
/// connection may end in the middle of one.
void checkAnswer(const plc::Answer &answer)
{
    std::size_t from = 0;
    while (from < answer.bytes.size()) {
        const plc::Slice rest = plc::Slice(answer.bytes).from(from);
        if (answer.isLast && (rest.size() < HEADER || LENGTH_FROM + rest.get32(4) > rest.size()))
            break;
        require(rest.size() >= HEADER && rest.get32(0) == 0x46494E53, "an answer is a frame");
        const std::size_t length = LENGTH_FROM + rest.get32(4);
        require(length >= HEADER && length <= rest.size(), "length of an answer");
        from += length;
    }
    require(answer.delayMs <= 120000 && answer.bytePauseMs <= 1000, "pauses of an answer");
}

void checkFrame(const plc::TcpFrame &frame)
{
    require(frame.bytes.size() >= HEADER && frame.bytes.size() <= FRAME_MOST, "length of a frame");
    require(plc::Slice(frame.bytes).get32(4) + LENGTH_FROM == frame.bytes.size(), "a frame is as long as it says");
}

/// Takes what frames there are. Returns whether the connection goes on.
bool answerFrames(Peer &peer)
{
    for (;;) {
        plc::TcpFrame frame;
        plc::TcpError error = plc::TCP_OK;
        const plc::FrameAssembler::Result result = peer.assembler.next(&frame, &error);
        if (result == plc::FrameAssembler::Result::NEED_MORE) {
            require(frame.bytes.empty() && error == plc::TCP_OK, "nothing is taken before it is whole");
            require(peer.waiting < FRAME_MOST, "bytes that wait");
            return true;
        }
        peer.waiting -= frame.bytes.size();
        const bool isBad = result == plc::FrameAssembler::Result::BAD;
        require(isBad == (error != plc::TCP_OK), "a bad frame has an error");
        if (!isBad)
            checkFrame(frame);
        const plc::Answer answer = isBad ? peer.session.reject(error) : peer.session.receive(frame);
        checkAnswer(answer);
        require(!isBad || answer.isLast, "a bad frame ends the connection");
        if (answer.isLast)
            return false;
    }
}

void setFault(plc::Plc &state, FuzzInput &input)
{
    static const char *const FAULTS[] = {"short",  "long=1000", "wrong-sid", "double",     "end-code=2203", "drop",
                                         "silence", "close",    "delay=5",   "bytewise=0", "jitter=3",      "short=1000"};
    const int choice = input.upTo(15);
    if (choice < 12)
        state.faults.set(FAULTS[choice]);
    else if (choice == 12)
        state.faults.set(input.text(12));
    else
        state.faults.clearAll();
}

void refuseWrites(plc::Plc &state, FuzzInput &input)
{
    state.controller.refusalInRun = input.upTo(1) != 0 ? 0x2204u : 0u;
    state.controller.refusalInProgram = input.upTo(1) != 0 ? 0x2201u : 0u;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    plc::Plc state(SERVER_NODE, CLIENTS_MOST, 1);
    std::unique_ptr<Peer> peers[PEERS];
    while (!input.isEmpty()) {
        // The length of the next piece; lengths that are no multiple of 8 are seldom but possible.
        const int choice = input.byte();
        if (choice == 0)
            setFault(state, input);
        if (choice == 1)
            refuseWrites(state, input);
        std::unique_ptr<Peer> &peer = peers[choice < 224 ? 0 : choice % PEERS];
        if (!peer)
            peer.reset(new Peer(state));
        const std::vector<std::uint8_t> piece = input.bytes(static_cast<std::size_t>(choice));
        peer->assembler.append(piece.data(), piece.size());
        peer->waiting += piece.size();
        if (!answerFrames(*peer))
            peer.reset();
        require(state.nodes.nodes().size() <= CLIENTS_MOST, "clients with a node");
    }
    for (std::unique_ptr<Peer> &peer : peers)
        peer.reset();
    require(state.nodes.nodes().empty(), "every node is given back");
    return 0;
}
