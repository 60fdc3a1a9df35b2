#include "session/dry_run.h"

#include "driver/change_feed.h"
#include "link/fins_layout.h"
#include "link/reply_judge.h"
#include "session/recipe_transfer.h"
#include "session/watch_plan.h"

#include <algorithm>
#include <fmt/format.h>

static const qint32 REQUEST_ID_WRITE = 2;

std::string writeFrameText(const FRAME_PRO &request)
{
    const int size = std::clamp<qint32>(request.sendLen, MEM_DATA, VALUE_BUFFER_SIZE);
    const quint8 *frame = request.frame;
    return fmt::format("{}: area {:02X}, wire address {:04X} {:02X}, count {:04X}, bytes {:02X}",
                       itemText(request.regType, request.address, request.count), frame[MEM_AREA],
                       get16(frame + MEM_WORD), frame[MEM_BIT], get16(frame + MEM_COUNT),
                       fmt::join(frame + MEM_DATA, frame + size, " "));
}

DryRun::DryRun(const DriverLibrary &library, const LinkOptions &options) : library_(library), options_(options)
{
    installChangeFeed(library_, false);
    initDriver(library_, memory_, options_);
    // The job that meets the missing handshake is never sent: a read goes first.
    QList<KEY_ADDRESS> plan = planWatch({{QString::fromLatin1("DM"), 0, 1, false}}, options_.wordsPerFrame);
    library_.addrMerge(plan);
    std::vector<std::string> none;
    exchange(none);
}

// One request and its made-up reply: of the awaited length, with the request's service ID, and 0 for everything else.
// Returns false if the driver has no request.
bool DryRun::exchange(std::vector<std::string> &lines)
{
    FRAME_PRO request;
    if (library_.getSendFrame(&request) == 0)
        return false;
    const std::size_t size = static_cast<std::size_t>(std::clamp<qint32>(request.sendLen, 0, VALUE_BUFFER_SIZE));
    if (requestKind(request.frame, size) == RequestKind::WRITE)
        lines.push_back(writeFrameText(request));
    QByteArray reply(std::max<qint32>(request.rcvLen, 0), '\0');
    if (carriesFins(request.frame, size) && reply.size() > FINS_SID)
        reply.replace(FINS_SID, 1, QByteArray(1, static_cast<char>(request.frame[FINS_SID])));
    QString info;
    library_.dealRcvFrame(reply, info);
    return true;
}

std::vector<std::string> DryRun::write(const Item &item, const std::vector<quint8> &data)
{
    std::vector<std::string> lines;
    auto from = data.begin();
    for (const Item &piece : cutItem(item, std::min(options_.wordsPerFrame, WRITE_WORDS_LIMIT))) {
        const auto to = from + static_cast<std::ptrdiff_t>(piece.byteSize());
        const std::vector<quint8> bytes(from, to);
        from = to;
        const std::size_t before = lines.size();
        library_.setData(VARIABLE_TAG, piece.regType, piece.address, piece.count, bytes.data(), REQUEST_ID_WRITE);
        while (lines.size() == before && exchange(lines)) {
        }
    }
    return lines;
}

std::vector<std::string> DryRun::writeRecipe(const std::vector<RecipeEntry> &entries)
{
    const std::vector<RecipeEntry> pieces = layOutRecipe(entries, options_.wordsPerFrame);
    planRecipe(library_, pieces, options_.station);
    fillRecipeBuffer(memory_, pieces, true);
    memory_.setFlag(RECIPE_WRITE_FLAG, true);
    std::vector<std::string> lines;
    while (memory_.flag(RECIPE_WRITE_FLAG) && exchange(lines)) {
    }
    return lines;
}

std::string dryRunText(const LinkOptions &options)
{
    const std::string mode = options.allowModeChange
                                 ? "asked for MONITOR mode, in which its program runs (--allow-mode-change)"
                                 : "not asked for another one; --allow-mode-change asks for MONITOR mode";
    return "if the PLC refuses for its operating mode, it is " + mode + "\ndry run: nothing was sent";
}
