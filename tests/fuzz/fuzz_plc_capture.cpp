#include "fuzz_input.h"
#include "recording/capture_reader.h"
#include "recording/replay.h"
#include "words/frame_words.h"

// Captures that the simulator is to replay: the file as a whole, whatever wrote it. Every frame in it is told in words
// and asked for.

namespace {

enum { HEADER = 16, LENGTH_FROM = 8, FRAME_MOST = 2028 };

void checkFrame(const plc::RecordedFrame &frame)
{
    const plc::Slice bytes(frame.bytes);
    require(frame.client > 0, "a frame has a client");
    require(bytes.size() >= HEADER && bytes.size() <= FRAME_MOST, "length of a frame");
    require(bytes.get32(0) == 0x46494E53 && bytes.get32(4) + LENGTH_FROM == bytes.size(), "what is taken is a frame");
    require(!plc::frameWords(frame.bytes).empty(), "a frame has words");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::vector<std::uint8_t> content(data, data + size); // fmemopen wants bytes that can be written
    plc::FileOwner file(fmemopen(content.data(), content.size(), "rb"));
    require(file != nullptr, "a file in memory");
    plc::Replay replay;
    std::vector<plc::Bytes> requests;
    std::string remark;
    const auto take = [&](const plc::RecordedFrame &frame) {
        checkFrame(frame);
        replay.take(frame);
        // A command: the simulator asks for no other frames.
        if (frame.isRequest && frame.bytes.size() >= HEADER + 12 && plc::Slice(frame.bytes).get32(8) == 2)
            requests.push_back(frame.bytes);
    };
    const std::string problem = plc::readCapture(std::move(file), take, &remark);
    require(problem.find('\n') == std::string::npos, "what is wrong is a line");
    require(replay.isEmpty() == requests.empty(), "every command is kept");
    for (const plc::Bytes &request : requests) {
        plc::Bytes reply;
        require(replay.answer(request, &reply), "what was recorded is known");
    }
    require(replay.report().known == requests.size() && replay.report().unknown == 0, "every request is counted");
    return 0;
}
