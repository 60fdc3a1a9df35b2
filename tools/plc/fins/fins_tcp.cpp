#include "fins/fins_tcp.h"

#include "fins/fins_command.h"

#include <algorithm>

namespace plc {

namespace {

const std::uint8_t MAGIC[] = {'F', 'I', 'N', 'S'};

// Values of the length field.
enum : std::uint32_t {
    LENGTH_BARE        = 4 + 4,                                     // command and error code, no body
    LENGTH_CLIENT_NODE = LENGTH_BARE + 4,
    LENGTH_SERVER_NODE = LENGTH_BARE + 4 + 4,
    LENGTH_FINS_MIN    = LENGTH_BARE + FINS_HEADER_SIZE + COMMAND_CODE
};

void addHeader(Bytes &bytes, std::size_t length, TcpCommand command, TcpError error)
{
    bytes.insert(bytes.end(), MAGIC, MAGIC + sizeof MAGIC);
    add32(bytes, static_cast<std::uint32_t>(length));
    add32(bytes, command);
    add32(bytes, error);
}

// Judges a complete header, the length first.
TcpError judgeHeader(std::uint32_t length, std::uint32_t command)
{
    std::uint32_t least = 0;
    std::uint32_t most = TCP_LENGTH_MAX;
    switch (command) {
    case TCP_CLIENT_NODE: least = most = LENGTH_CLIENT_NODE; break;
    case TCP_FINS_FRAME:  least = LENGTH_FINS_MIN; break;
    default:              return length > most ? TCP_LENGTH : TCP_UNSUPPORTED_COMMAND;
    }
    if (length > most)
        return TCP_LENGTH;
    return length < least ? TCP_TOO_SHORT : TCP_OK;
}

// Judges as soon as there is something to judge: the magic while it arrives, a length that leaves no room for a command
// once it is there, the rest with the whole header.
TcpError judge(const Bytes &buffer)
{
    const std::size_t present = std::min(buffer.size(), sizeof MAGIC);
    if (!std::equal(MAGIC, MAGIC + present, buffer.begin()))
        return TCP_NOT_FINS;
    const Slice header(buffer);
    if (buffer.size() >= TCP_COMMAND && header.get32(TCP_LENGTH_POS) < LENGTH_BARE)
        return TCP_TOO_SHORT;
    if (buffer.size() < TCP_BODY)
        return TCP_OK;
    return judgeHeader(header.get32(TCP_LENGTH_POS), header.get32(TCP_COMMAND));
}

} // namespace

void FrameAssembler::append(const std::uint8_t *bytes, std::size_t count)
{
    buffer.insert(buffer.end(), bytes, bytes + count);
}

FrameAssembler::Result FrameAssembler::next(TcpFrame *frame, TcpError *error)
{
    const TcpError judged = judge(buffer);
    if (judged != TCP_OK) {
        *error = judged;
        frame->bytes.swap(buffer);
        buffer.clear();
        return Result::BAD;
    }
    if (buffer.size() < TCP_BODY)
        return Result::NEED_MORE;
    const std::size_t size = TCP_LENGTH_FROM + Slice(buffer).get32(TCP_LENGTH_POS);
    if (buffer.size() < size)
        return Result::NEED_MORE;
    const Bytes::iterator end = buffer.begin() + static_cast<Bytes::difference_type>(size);
    frame->bytes.assign(buffer.begin(), end);
    buffer.erase(buffer.begin(), end);
    return Result::FRAME;
}

Bytes makeNodeReply(TcpError error, unsigned clientNode, unsigned serverNode)
{
    Bytes bytes;
    addHeader(bytes, LENGTH_SERVER_NODE, TCP_SERVER_NODE, error);
    add32(bytes, clientNode);
    add32(bytes, serverNode);
    return bytes;
}

Bytes makeErrorNotice(TcpError error)
{
    Bytes bytes;
    addHeader(bytes, LENGTH_BARE, TCP_ERROR, error);
    return bytes;
}

Bytes makeConfirmation()
{
    Bytes bytes;
    addHeader(bytes, LENGTH_BARE, TCP_CONFIRM, TCP_OK);
    return bytes;
}

Bytes makeFrameSend(const Bytes &finsFrame)
{
    Bytes bytes;
    addHeader(bytes, LENGTH_BARE + finsFrame.size(), TCP_FINS_FRAME, TCP_OK);
    bytes.insert(bytes.end(), finsFrame.begin(), finsFrame.end());
    return bytes;
}

} // namespace plc
