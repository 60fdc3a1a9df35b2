#include "recording/replay.h"

#include "fins/fins_command.h"
#include "fins/fins_frame.h"
#include "fins/fins_tcp.h"

#include <iostream>

namespace plc {

namespace {

// Longer lines are no frames: a frame has at most 2028 bytes, a faulty one not much more than twice as many.
const std::size_t LINE_MAX_CHARACTERS = 16384;
const std::size_t REPORTS_MAX = 1000; // of requests that are not in the recording

bool isCommand(const Bytes &frame)
{
    return frame.size() >= TCP_BODY + FINS_HEADER_SIZE + COMMAND_CODE &&
           Slice(frame).get32(TCP_COMMAND) == TCP_FINS_FRAME;
}

// The request without what may differ.
Bytes keyOf(Bytes request)
{
    for (const std::size_t field : {FINS_DA1, FINS_SA1, FINS_SID})
        request[TCP_BODY + field] = 0;
    return request;
}

// Puts nodes and service ID right in every frame of `reply`; a service ID that was wrong stays wrong by as much.
void adapt(Bytes &reply, const Bytes &request, unsigned recordedSid)
{
    std::size_t from = 0;
    while (from + TCP_BODY + FINS_HEADER_SIZE <= reply.size()) {
        const Slice frame = Slice(reply).from(from);
        const std::uint32_t length = frame.get32(TCP_LENGTH_POS);
        if (frame.get32(TCP_COMMAND) == TCP_FINS_FRAME) {
            const std::size_t header = from + TCP_BODY;
            const unsigned drift = reply[header + FINS_SID] - recordedSid;
            reply[header + FINS_DA1] = request[TCP_BODY + FINS_SA1];
            reply[header + FINS_SA1] = request[TCP_BODY + FINS_DA1];
            reply[header + FINS_SID] = static_cast<std::uint8_t>((request[TCP_BODY + FINS_SID] + drift) & 0xFFu);
        }
        if (length > reply.size())
            return;
        from += TCP_LENGTH_FROM + length;
    }
}

} // namespace

std::string Replay::load(std::istream &text, const std::string &name)
{
    std::string line;
    for (unsigned number = 1; std::getline(text, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == '#')
            continue;
        const std::string place = name + ":" + std::to_string(number) + ": ";
        if (line.size() > LINE_MAX_CHARACTERS)
            return place + "the line is longer than any frame";
        RecordedFrame frame;
        const std::string wrong = parseRecordedFrame(line, &frame);
        if (!wrong.empty())
            return place + wrong;
        take(frame);
    }
    for (const auto &request : open)
        keep(request.second, Bytes());
    open.clear();
    return courses.empty() ? name + ":1: there is no FINS command in this recording; make one with --record"
                           : std::string();
}

// A client's reply comes before its next request, or never.
void Replay::take(const RecordedFrame &frame)
{
    const auto request = open.find(frame.client);
    if (request != open.end()) {
        keep(request->second, frame.isRequest ? Bytes() : frame.bytes);
        open.erase(request);
    }
    if (frame.isRequest && isCommand(frame.bytes))
        open[frame.client] = frame.bytes;
}

void Replay::keep(const Bytes &request, const Bytes &reply)
{
    courses[keyOf(request)].replies.push_back({reply, request[TCP_BODY + FINS_SID]});
}

bool Replay::answer(const Bytes &request, Bytes *reply)
{
    const Bytes key = keyOf(request);
    const auto found = courses.find(key);
    if (found == courses.end()) {
        const bool isNew = reported.size() < REPORTS_MAX && reported.insert(key).second;
        const auto command = request.begin() + TCP_BODY + FINS_HEADER_SIZE;
        if (isNew)
            std::cerr << "fins_plc: this command is not in the recording: " << hexText(Bytes(command, request.end()))
                      << std::endl;
        return false;
    }
    Course &course = found->second;
    const Reply &recorded = course.replies[course.next];
    if (course.next + 1 < course.replies.size())
        ++course.next;
    Bytes adapted = recorded.bytes;
    adapt(adapted, request, recorded.requestSid);
    *reply = adapted;
    return true;
}

} // namespace plc
