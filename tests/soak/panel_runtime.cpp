#include "panel_runtime.h"

#include <cstring>

#include "data/write_completion.h"

namespace soak {

namespace {

enum { TAG = 1, STATION = 1, FLAG_WRITE = 60115, FLAG_READ = 60116, QUEUE_ROOM = 400, PATIENCE = 20000 };

// The memory that the run uses.
struct Range {
    const char *type;
    int         first;
    int         count;
    bool        isWritten; // by this runtime's writes
};

const Range RANGES[] = {
    {"DM", 100, 40, true}, {"WR", 10, 10, true}, {"HR", 0, 30, true}, {"AR", 450, 6, true},
    {"CIO", 0, 20, false}, {"T", 0, 10, false},  {"C", 0, 10, false}, {"DM", 500, 60, false},
};
const int RANGE_COUNT = sizeof RANGES / sizeof RANGES[0];
const int PLANT_RANGES = 4;  // from here on the PLC's own program changes words, but for the last range
const int WRITTEN_RANGES = 4;
const Range &RECIPE = RANGES[RANGE_COUNT - 1];

QString qt(const std::string &text) { return QString::fromLatin1(text.c_str()); }

bool isBit(const QString &type) { return type.endsWith(QLatin1String("_bit")); }

KEY_ADDRESS watched(const QString &type, int address, int count)
{
    KEY_ADDRESS key;
    key.requestTag = TAG;
    key.regType = type;
    key.address = address;
    key.count = count;
    std::memset(key.data, 0, sizeof key.data);
    return key;
}

} // namespace

PanelRuntime *PanelRuntime::current_ = nullptr;

PanelRuntime::PanelRuntime(Link &link, std::uint32_t seed) : link_(link), random_(seed)
{
    current_ = this;
    for (const Range &range : RANGES)
        written_.emplace_back(static_cast<std::size_t>(range.isWritten ? range.count : 0));
    intf_setAddrValueChangeCallBack(&PanelRuntime::onChange);
    link_.connect();
    configure(below(3));
    planRecipe(7);
    watchAll();
}

PanelRuntime::~PanelRuntime() { current_ = nullptr; }

void PanelRuntime::onChange(qint32, qint32, QString regType, qint32 address)
{
    ++current_->counters_.changes;
    if (address == current_->headAddress_ && regType == current_->headType_)
        ++current_->bitReports_;
}

// ---- The memory that was written ------------------------------------------------------------------------------------

void PanelRuntime::markWord(const VARIABLE &piece, int word, int value, int bits, bool isSure)
{
    for (std::size_t i = 0; i < WRITTEN_RANGES; ++i) {
        const Range &range = RANGES[i];
        const bool isHere = piece.regType == qt(range.type) || piece.regType == qt(range.type) + qt("_bit");
        if (!isHere || word < range.first || word >= range.first + range.count)
            continue;
        Written &written = written_[i][static_cast<std::size_t>(word - range.first)];
        written.value = (written.value & ~bits) | (value & bits);
        written.sure = isSure ? written.sure | bits : written.sure & ~bits;
    }
}

void PanelRuntime::mark(const VARIABLE &piece, bool isSure)
{
    for (int i = 0; i < piece.count; ++i) {
        const int at = piece.address + i;
        if (isBit(piece.regType))
            markWord(piece, at / 16, piece.value[i] == 1 ? 0xFFFF : 0, 1 << (at % 16), isSure);
        else
            markWord(piece, at, piece.value[2 * i] + 256 * piece.value[2 * i + 1], 0xFFFF, isSure);
    }
}

// ---- What a runtime does --------------------------------------------------------------------------------------------

void PanelRuntime::configure(std::uint32_t property)
{
    static const char *const PROPERTIES[] = {"1#0#0#3#8", "1#0#0#3#20", "1#0#0#3#64"};
    for (int i = 0; i < driver.writeList.size(); ++i)
        mark(driver.writeList.at(i), false);
    counters_.writes.cleared += driver.writeList.size();
    ++counters_.configurations;
    qint32 status = 0;
    intf_initProperty(block_.address(), 0, recipe_.address(), &status, PROPERTIES[property], mutex_.address());
}

void PanelRuntime::watchAll()
{
    QList<KEY_ADDRESS> items;
    for (const Range &range : RANGES)
        items.append(watched(qt(range.type), range.first, range.count));
    intf_addrMerge(items);
}

void PanelRuntime::watchSome()
{
    QList<KEY_ADDRESS> items;
    for (std::uint32_t n = below(12); n > 0; --n) {
        const Range &range = RANGES[below(RANGE_COUNT)];
        const int first = static_cast<int>(below(static_cast<std::uint32_t>(range.count)));
        const int count = 1 + static_cast<int>(below(static_cast<std::uint32_t>(range.count - first)));
        const bool asBits = range.isWritten && below(2) == 0;
        items.append(asBits ? watched(qt(range.type) + qt("_bit"), (range.first + first) * 16 + 3, count * 16 - 3)
                            : watched(qt(range.type), range.first + first, count));
    }
    ++counters_.plans;
    intf_addrMerge(items);
}

// The recipe's words in touching variables of up to `longest` words.
void PanelRuntime::planRecipe(std::uint32_t longest)
{
    if (block_.data()[FLAG_WRITE] != 0 || block_.data()[FLAG_READ] != 0)
        return;
    QVector<_RCP_VAR_PRO> vars;
    for (int at = 0; at < RECIPE.count;) {
        const int left = RECIPE.count - at;
        const int wanted = 1 + static_cast<int>(below(longest));
        const int count = wanted < left ? wanted : left;
        vars.append(_RCP_VAR_PRO{STATION, TAG, qt(RECIPE.type), RECIPE.first + at, count, at, 0});
        at += count;
    }
    intf_setRcpAddress(vars);
}

void PanelRuntime::write()
{
    if (driver.writeList.size() > QUEUE_ROOM)
        return;
    const Range &range = RANGES[below(WRITTEN_RANGES)];
    const bool asBits = below(2) == 0;
    const auto units = static_cast<std::uint32_t>(asBits ? range.count * 16 : range.count);
    const int first = static_cast<int>(below(units));
    const int left = static_cast<int>(units) - first;
    const int wanted = 1 + static_cast<int>(below(asBits ? 30 : 12));
    const int count = wanted < left ? wanted : left;
    quint8 data[64];
    for (quint8 &byte : data)
        byte = static_cast<quint8>(asBits ? below(2) : below(256));
    const auto before = driver.writeList.size();
    intf_setData(TAG, qt(range.type) + qt(asBits ? "_bit" : ""), (asBits ? 16 : 1) * range.first + first, count, data,
                 7);
    counters_.writes.queued += driver.writeList.size() - before;
}

void PanelRuntime::readOnCondition()
{
    if (driver.conditionReadList.size() > QUEUE_ROOM)
        return;
    const Range &range = RANGES[below(RANGE_COUNT)];
    const int count = 1 + static_cast<int>(below(static_cast<std::uint32_t>(range.count)));
    KEY_ADDRESS item = watched(qt(range.type), range.first, count);
    intf_addConditionRead(item, 9);
    ++counters_.conditionReads;
}

void PanelRuntime::readValues()
{
    const Range &range = RANGES[below(RANGE_COUNT)];
    quint8 out[2 * 64];
    intf_getData(TAG, qt(range.type), range.first, range.count, out);
}

void PanelRuntime::requestRecipe()
{
    mutex_->lock();
    block_.data()[below(2) == 0 ? FLAG_WRITE : FLAG_READ] = 1;
    mutex_->unlock();
    ++counters_.recipes;
}

void PanelRuntime::act()
{
    const std::uint32_t choice = below(100000);
    if (choice < 8000)
        write();
    else if (choice < 11000)
        readOnCondition();
    else if (choice < 14000)
        readValues();
    else if (choice < 16000)
        link_.change(RANGES[PLANT_RANGES + below(3)].type, static_cast<int>(below(10)),
                     static_cast<int>(below(65536)));
    else if (choice < 16200)
        watchSome();
    else if (choice < 16400)
        requestRecipe();
    else if (choice < 16450)
        planRecipe(7);
    else if (choice < 16460) {
        configure(below(3));
        watchSome();
    }
}

// ---- The communication loop -----------------------------------------------------------------------------------------

bool PanelRuntime::exchange()
{
    if (intf_getSendFrame(&frame_) == 0)
        return false;
    ++counters_.requests;
    const bool hasWrite = driver.jobType == JOB_WRITE && !driver.writeList.isEmpty();
    const VARIABLE head = hasWrite ? driver.writeList.at(0) : VARIABLE();
    const auto writes = driver.writeList.size();
    if (hasWrite)
        checkWriteFrame(head);
    headType_ = isBit(head.regType) ? head.regType : QString();
    headAddress_ = head.address;
    bitReports_ = 0;
    Bytes bytes;
    if (link_.isUp())
        bytes = link_.exchange(Bytes(frame_.frame, frame_.frame + frame_.sendLen));
    QByteArray reply(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
    QString info;
    const qint32 result = intf_dealRcvFrame(reply, info);
    if (info.isEmpty())
        throw Failure("a reply to a request has no info text");
    headType_ = QString();
    if (result == 8 || result == 2)
        ++counters_.rejected;
    if (driver.writeList.size() != writes) {
        if (!hasWrite || driver.writeList.size() != writes - 1)
            throw Failure("a write left the queue unasked");
        endWrite(head, result, reply);
    }
    if (result == 2) { // the link is given up
        link_.connect();
        ++counters_.reconnects;
    }
    return true;
}

// A write's own frame carries the head of the queue.
void PanelRuntime::checkWriteFrame(const VARIABLE &head) const
{
    if (frame_.regType.isEmpty())
        return; // a handshake or a mode change goes first
    if (frame_.regType != head.regType || frame_.address != head.address || frame_.count != head.count
        || std::memcmp(frame_.value, head.value, sizeof head.value) != 0)
        throw Failure("the write in flight is not the oldest one");
}

void PanelRuntime::endWrite(const VARIABLE &head, int result, const QByteArray &reply)
{
    const bool isHandshake = frame_.frame[11] == 0;
    const bool isOwnFrame = frame_.frame[26] == 0x01 && frame_.frame[27] == 0x02 && !frame_.regType.isEmpty();
    mark(head, false);
    if (result == 2) {
        ++counters_.writes.failed;
        checkFailureReport(head);
    } else if (result == 1 && isHandshake) {
        ++counters_.writes.byHandshake;
    } else if (result == 1 && isOwnFrame && reply.size() == 30) {
        const bool isDone = reply.at(28) == 0 && reply.at(29) == 0;
        ++(isDone ? counters_.writes.done : counters_.writes.refused);
        mark(head, isDone);
    } else {
        throw Failure("a write left the queue without having been sent, refused or reported");
    }
}

// A failed bit write calls back once a bit, a failed word write shows the PLC's value again.
void PanelRuntime::checkFailureReport(const VARIABLE &head) const
{
    if (isBit(head.regType)) {
        if (bitReports_ < head.count)
            throw Failure("a failed bit write was not reported once for each bit");
        return;
    }
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_ &area = driver.dataAreas.at(i);
        const bool isOfHead = area.requestTag == head.requestTag && area.regType == head.regType
                           && area.address >= head.address && area.address < head.address + head.count;
        if (isOfHead && area.writePending != 0)
            throw Failure("a failed word write still shows its value");
    }
}

void PanelRuntime::run(long long requests)
{
    link_.setFaults(true);
    while (counters_.requests < requests) {
        act();
        if (!exchange() && !link_.isUp())
            readOnCondition(); // a lost link is told to the driver by a request without a reply
    }
}

// ---- The end --------------------------------------------------------------------------------------------------------

bool PanelRuntime::isBusy()
{
    return !driver.writeList.isEmpty() || !driver.conditionReadList.isEmpty() || block_.data()[FLAG_WRITE] != 0
        || block_.data()[FLAG_READ] != 0 || !link_.isUp() || !driver.connected;
}

void PanelRuntime::emptyQueues()
{
    for (int i = 0; isBusy(); ++i) {
        if (i == PATIENCE)
            throw Failure("the queues do not empty");
        if (!exchange())
            readOnCondition();
    }
}

// A PLC in RUN mode outlasts the faults. The driver takes it out when a write is refused, and what was refused ends with
// the link: the reply to it is compared with the service ID of the mode change. So a write has to come before a recipe.
void PanelRuntime::leaveRunMode()
{
    write();
    emptyQueues();
}

void PanelRuntime::pollAround()
{
    const auto rounds = 2 * driver.readList.size();
    for (int i = 0; i < rounds; ++i)
        if (!exchange())
            throw Failure("the poll has stopped");
    if (!driver.frameList.isEmpty())
        throw Failure("a request stays in flight");
}

void PanelRuntime::compareImage()
{
    for (const Range &range : RANGES) {
        quint8 out[2 * 64];
        intf_getData(TAG, qt(range.type), range.first, range.count, out);
        const std::vector<int> words = link_.words(range.type, range.first, range.count);
        for (int i = 0; i < range.count; ++i) {
            const int seen = out[2 * i] + 256 * out[2 * i + 1];
            if (seen != words.at(static_cast<std::size_t>(i)))
                throw Failure(std::string(range.type) + " " + std::to_string(range.first + i) + ": the image has "
                              + std::to_string(seen) + ", the PLC "
                              + std::to_string(words[static_cast<std::size_t>(i)]));
        }
        counters_.wordsCompared += range.count;
    }
    for (int i = 0; i < driver.dataAreas.size(); ++i)
        if (driver.dataAreas.at(i).writePending != 0 || driver.dataAreas.at(i).pendingBits != 0)
            throw Failure("a word stays pending without a write");
}

void PanelRuntime::compareWrites()
{
    const WriteAccount &writes = counters_.writes;
    if (writes.queued != writes.ended())
        throw Failure(std::to_string(writes.queued) + " write pieces were queued, " + std::to_string(writes.ended())
                      + " ended");
    for (std::size_t r = 0; r < WRITTEN_RANGES; ++r) {
        const Range &range = RANGES[r];
        const std::vector<int> words = link_.words(range.type, range.first, range.count);
        for (std::size_t i = 0; i < words.size(); ++i) {
            const Written &written = written_[r][i];
            if (((words[i] ^ written.value) & written.sure) != 0)
                throw Failure(std::string(range.type) + " " + std::to_string(range.first + static_cast<int>(i))
                              + ": acknowledged writes made " + std::to_string(written.value) + ", the PLC has "
                              + std::to_string(words[i]));
            for (int bits = written.sure; bits != 0; bits &= bits - 1)
                ++counters_.bitsOfWrites;
        }
    }
}

void PanelRuntime::transferRecipe(int flag)
{
    block_.data()[flag] = 1;
    for (int i = 0; block_.data()[flag] != 0; ++i)
        if (i == PATIENCE || !exchange())
            throw Failure("the recipe transfer does not end");
}

void PanelRuntime::compareRecipe()
{
    for (int i = 0; i < 2 * RECIPE.count; ++i)
        recipe_.data()[i] = static_cast<quint8>(below(256));
    transferRecipe(FLAG_WRITE);
    const std::vector<int> words = link_.words(RECIPE.type, RECIPE.first, RECIPE.count);
    for (const char *const when : {"written", "read back"}) {
        for (int i = 0; i < RECIPE.count; ++i)
            if (recipe_.data()[2 * i] + 256 * recipe_.data()[2 * i + 1] != words[static_cast<std::size_t>(i)])
                throw Failure("recipe word " + std::to_string(i) + " differs when " + when);
        std::memset(recipe_.data(), 0xEE, static_cast<std::size_t>(2 * RECIPE.count));
        transferRecipe(FLAG_READ);
    }
}

void PanelRuntime::checkSilence()
{
    QList<KEY_ADDRESS> nothing;
    intf_addrMerge(nothing);
    for (int i = 0; i < 2; ++i)
        if (intf_getSendFrame(&frame_) != 0)
            throw Failure("the driver asks for more although nothing is left");
    if (!driver.frameList.isEmpty() || !driver.writeList.isEmpty() || !driver.conditionReadList.isEmpty())
        throw Failure("the queues are not empty");
}

void PanelRuntime::settle()
{
    link_.setFaults(false);
    watchAll();
    emptyQueues();
    leaveRunMode();
    compareRecipe();
    pollAround();
    compareImage();
    compareWrites();
    checkSilence();
    // Always the same configuration and plans, so that the heap can be compared.
    configure(2);
    planRecipe(1);
    watchAll();
}

} // namespace soak
