#include "recording/replay.h"

#include "fins/fins_command.h"
#include "fins/fins_frame.h"
#include "fins/fins_tcp.h"
#include "words/frame_words.h"

#include <iostream>

namespace plc {

namespace {

// Longer lines are no frames: a frame has at most 2028 bytes, a faulty one not much more than twice as many.
const std::size_t LINE_MAX_CHARACTERS = 16384;
const std::size_t REPORTS_MAX = 1000; // of requests that are not in the recording
const std::size_t OPEN_MAX = 256;     // requests of a client that wait for replies: as many as there are service IDs

bool isFins(const Bytes &frame)
{
    return frame.size() >= TCP_BODY + FINS_HEADER_SIZE + COMMAND_CODE &&
           Slice(frame).get32(TCP_COMMAND) == TCP_FINS_FRAME;
}

unsigned sidOf(const Bytes &frame) { return frame[TCP_BODY + FINS_SID]; }

unsigned commandOf(const Bytes &frame) { return Slice(frame).get16(TCP_BODY + FINS_HEADER_SIZE); }

Slice commandIn(const Bytes &frame) { return Slice(frame).from(TCP_BODY + FINS_HEADER_SIZE); }

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

void say(const Bytes &key)
{
    const Slice command = commandIn(key);
    std::cerr << "fins_plc: this command is not in the recording: "
              << hexText(Bytes(command.begin(), command.begin() + command.size())) << std::endl;
}

std::string timesText(std::uint64_t count) { return std::to_string(count) + (count == 1 ? " time " : " times "); }

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
    return isEmpty() ? name + ":1: there is no FINS command in this recording; make one with --record" : std::string();
}

// A request has its place in the course at once, so that one that is never answered keeps it.
void Replay::take(const RecordedFrame &frame)
{
    if (!frame.isRequest) {
        takeReply(frame.client, frame.bytes);
        return;
    }
    if (!isFins(frame.bytes))
        return;
    const Bytes key = keyOf(frame.bytes);
    std::vector<Reply> &replies = courses[key].replies;
    std::vector<OpenRequest> &waiting = open[frame.client];
    if (waiting.size() == OPEN_MAX)
        waiting.erase(waiting.begin());
    waiting.push_back({key, replies.size()});
    replies.push_back({Bytes(), sidOf(frame.bytes)});
}

// A reply belongs to the last open request with its service ID and command code, to the last one with its code if its
// service ID is wrong, and to the last one of all if it is of another kind. A connection confirmation is none.
void Replay::takeReply(unsigned client, const Bytes &reply)
{
    std::vector<OpenRequest> &waiting = open[client];
    if (waiting.empty() || (reply.size() >= TCP_BODY && Slice(reply).get32(TCP_COMMAND) == TCP_CONFIRM))
        return;
    const auto likeness = [&](const OpenRequest &request) {
        if (!isFins(reply) || commandOf(reply) != commandOf(request.key))
            return 0;
        return courses[request.key].replies[request.index].requestSid == sidOf(reply) ? 2 : 1;
    };
    std::size_t best = waiting.size() - 1;
    for (std::size_t i = best; i-- > 0;)
        if (likeness(waiting[i]) > likeness(waiting[best]))
            best = i;
    courses[waiting[best].key].replies[waiting[best].index].bytes = reply;
    waiting.erase(waiting.begin() + static_cast<std::vector<OpenRequest>::difference_type>(best));
}

bool Replay::answer(const Bytes &request, Bytes *reply)
{
    const Bytes key = keyOf(request);
    const auto found = courses.find(key);
    if (found == courses.end()) {
        noteUnknown(key);
        return false;
    }
    ++knownCount;
    Course &course = found->second;
    const Reply &recorded = course.replies[course.next];
    if (course.next + 1 < course.replies.size())
        ++course.next;
    Bytes adapted = recorded.bytes;
    adapt(adapted, request, recorded.requestSid);
    *reply = adapted;
    return true;
}

void Replay::noteUnknown(const Bytes &key)
{
    ++unknownCount;
    if (reported.size() < REPORTS_MAX && reported.insert(key).second)
        say(key);
    const std::string words = commandWords(commandIn(key));
    const auto seen = unknown.find(words);
    if (seen != unknown.end())
        ++seen->second;
    else if (unknown.size() < REPORTS_MAX)
        unknown[words] = 1;
}

Replay::Report Replay::report() const
{
    Report report;
    report.known = knownCount;
    report.unknown = unknownCount;
    std::uint64_t others = unknownCount;
    for (const auto &request : unknown) {
        others -= request.second;
        report.requests.push_back(timesText(request.second) + request.first);
    }
    if (others > 0)
        report.requests.push_back(timesText(others) + "another command");
    return report;
}

} // namespace plc
