#include "recording/frame_splitter.h"

#include "fins/fins_tcp.h"

#include <algorithm>

namespace plc {

namespace {

const std::uint8_t  MAGIC[] = {'F', 'I', 'N', 'S'};
const std::uint32_t LENGTH_MIN = TCP_BODY - TCP_LENGTH_FROM; // of a frame that is its header alone

bool isForeign(const Bytes &buffer)
{
    const std::size_t present = std::min(buffer.size(), sizeof MAGIC);
    if (!std::equal(MAGIC, MAGIC + present, buffer.begin()))
        return true;
    const std::uint32_t length = Slice(buffer).get32(TCP_LENGTH_POS);
    return buffer.size() >= TCP_LENGTH_FROM && (length < LENGTH_MIN || length > TCP_LENGTH_MAX);
}

} // namespace

FrameSplitter::Result FrameSplitter::next(Bytes *piece)
{
    if (isForeign(buffer)) {
        *piece = takeRest();
        return Result::FOREIGN;
    }
    const std::size_t size = TCP_LENGTH_FROM + Slice(buffer).get32(TCP_LENGTH_POS);
    if (buffer.size() < TCP_BODY || buffer.size() < size)
        return Result::NEED_MORE;
    const auto end = buffer.begin() + static_cast<Bytes::difference_type>(size);
    piece->assign(buffer.begin(), end);
    buffer.erase(buffer.begin(), end);
    return Result::FRAME;
}

Bytes FrameSplitter::takeRest()
{
    Bytes rest;
    rest.swap(buffer);
    return rest;
}

} // namespace plc
