#include "fuzz_input.h"
#include "link/reply_assembler.h"

#include <cstring>

// The panel's reply assembler: any bytes in any pieces, as its link reads them.

namespace {

enum { LENGTH_FROM = 8, HEADER = 16 };

void checkComplete(const ReplyAssembler &assembler)
{
    const std::uint8_t *reply = assembler.reply();
    const std::size_t size = assembler.replySize();
    require(size >= HEADER && size <= ReplyAssembler::REPLY_LIMIT, "length of a reply");
    require(std::memcmp(reply, "FINS", 4) == 0, "start of a reply");
    const std::size_t following = std::size_t(reply[4]) << 24 | std::size_t(reply[5]) << 16
                                | std::size_t(reply[6]) << 8 | reply[7];
    require(size == LENGTH_FROM + following, "a reply is as long as it says");
}

void check(const ReplyAssembler &assembler)
{
    const AssemblyState state = assembler.state();
    if (state == AssemblyState::COMPLETE) {
        checkComplete(assembler);
        return;
    }
    require(assembler.replySize() == 0, "no reply before it is complete");
    if (state == AssemblyState::INCOMPLETE)
        require(assembler.roomSize() >= 1, "room for the rest of a reply");
}

/// One read of the connection: as many bytes as there are and as fit.
void receive(ReplyAssembler &assembler, FuzzInput &input, std::size_t most)
{
    const std::vector<std::uint8_t> piece = input.bytes(std::min(most, assembler.roomSize()));
    if (!piece.empty())
        std::memcpy(assembler.room(), piece.data(), piece.size());
    const AssemblyState state = assembler.added(piece.size());
    require(state == assembler.state(), "the state stays");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    ReplyAssembler assembler;
    while (!input.isEmpty()) {
        const int choice = input.byte();
        if (choice == 0) {
            assembler.beginReply();
            require(assembler.state() == AssemblyState::INCOMPLETE && assembler.leftOver() == 0,
                    "nothing of an earlier reply is left");
        } else if (choice == 1) {
            assembler.reset();
            require(assembler.state() == AssemblyState::INCOMPLETE && assembler.roomSize() > 2048, "a new connection");
        } else if (choice == 2 && assembler.state() == AssemblyState::COMPLETE) {
            const std::size_t left = assembler.leftOver();
            assembler.dropReply();
            require(assembler.leftOver() + assembler.replySize() == left, "what came behind a reply stays");
        } else {
            receive(assembler, input, static_cast<std::size_t>(choice) * (choice > 250 ? 9 : 1));
        }
        check(assembler);
    }
    return 0;
}
