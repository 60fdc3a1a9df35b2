#include "session/write_report.h"

#include "link/fins_codes.h"

#include <algorithm>

WriteReport::WriteReport(Runtime &runtime, bool readsBack)
    : runtime_(runtime), readsBack_(readsBack), mode_(Mode::NOT_ASKED), modeUnknown_(false), isFinished_(false), saysDifferences_(true)
{
    calls_.push_back(runtime.onOrder([this](const FRAME_PRO &request, RequestKind kind) { noteOrder(request, kind); }));
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { noteExchange(exchange); }));
    calls_.push_back(runtime.onLost([this] { noteLost(); }));
}

void WriteReport::add(const std::string &name, const Item &item, const ValueFormat &format,
                      const std::vector<quint8> &data)
{
    orders_.push_back({name, item, format, data});
    progress_.push_back({std::vector<Cell>(static_cast<std::size_t>(item.count), Cell::UNSENT), AwaitedWords(), "", false, false});
}

// Changes the words or bits of the orders that the request writes.
template <typename Change>
void WriteReport::change(const FRAME_PRO &request, Change cellChange)
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const Item &item = orders_[i].item;
        const qint32 begin = std::max(item.address, request.address);
        const qint32 end   = std::min(item.address + item.count, request.address + request.count);
        if (item.regType != request.regType || begin >= end || orders_[i].fate)
            continue;
        for (qint32 at = begin; at < end; ++at) {
            Cell &cell = progress_[i].cells[static_cast<std::size_t>(at - item.address)];
            cell = cellChange(cell, i);
        }
    }
}

void WriteReport::noteOrder(const FRAME_PRO &request, RequestKind kind)
{
    if (kind == RequestKind::MODE_CHANGE) {
        if (mode_ == Mode::NOT_ASKED)
            say("asking the PLC for MONITOR mode");
        mode_ = mode_ == Mode::NOT_ASKED ? Mode::ASKED : Mode::DOUBTFUL;
        return;
    }
    change(request, [](Cell cell, std::size_t) {
        return cell == Cell::SENT || cell == Cell::DOUBTFUL ? Cell::DOUBTFUL : Cell::SENT;
    });
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (!orders_[i].fate)
            progress_[i].unread.expect({orders_[i].item});
    }
}

void WriteReport::noteExchange(const Exchange &exchange)
{
    if (exchange.kind == RequestKind::MODE_CHANGE)
        noteModeChange(exchange.judgement);
    else if (exchange.kind == RequestKind::WRITE)
        noteWrite(exchange);
    else if (exchange.kind == RequestKind::READ && exchange.accepted)
        noteRead(exchange.request);
}

void WriteReport::noteWrite(const Exchange &exchange)
{
    if (exchange.accepted)
        change(exchange.request, [](Cell, std::size_t) { return Cell::DONE; });
    if (exchange.accepted && !readsBack_)
        acceptAll();
    if (exchange.judgement.verdict != Verdict::REFUSED)
        return;
    const auto endCode = static_cast<std::uint16_t>(exchange.judgement.code);
    std::string text = endCodeText(endCode);
    if (isModeEndCode(endCode) && !exchange.switches)
        text += "; the PLC would have to be in MONITOR mode, for which --allow-mode-change asks it";
    change(exchange.request, [&](Cell cell, std::size_t i) {
        progress_[i].refusal = text;
        orders_[i].endCode   = endCode;
        return cell == Cell::DOUBTFUL ? Cell::DOUBTFUL : Cell::REFUSED;
    });
    if (!exchange.switches)
        settleRefused();
}

void WriteReport::acceptAll()
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const Order &order = orders_[i];
        if (!order.fate && cellsThatAre(i, Cell::DONE) == progress_[i].cells.size())
            settle(i, Fate::ACCEPTED, "accepted: " + order.name + " = " + shownValue(order.format, order.data));
    }
}

void WriteReport::noteModeChange(const Judgement &judgement)
{
    if (judgement.verdict == Verdict::GOOD) {
        say("the PLC is in MONITOR mode now");
        mode_        = Mode::NOT_ASKED;
        modeUnknown_ = false;
        replaceCells(Cell::REFUSED, Cell::AGAIN);
    } else if (judgement.verdict == Verdict::REFUSED) {
        say("the PLC refuses the change to MONITOR mode: " + endCodeText(static_cast<std::uint16_t>(judgement.code)));
        if (mode_ == Mode::DOUBTFUL)
            loseMode();
        mode_ = Mode::NOT_ASKED;
        settleRefused();
    }
}

void WriteReport::replaceCells(Cell from, Cell to)
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (!orders_[i].fate)
            std::replace(progress_[i].cells.begin(), progress_[i].cells.end(), from, to);
    }
}

void WriteReport::loseMode()
{
    say("unconfirmed: the PLC may have been switched to MONITOR mode");
    modeUnknown_ = true;
    mode_        = Mode::NOT_ASKED;
}

void WriteReport::noteLost()
{
    if (mode_ != Mode::NOT_ASKED)
        loseMode();
    settleRefused();
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const std::size_t unanswered = cellsThatAre(i, Cell::SENT) + cellsThatAre(i, Cell::DOUBTFUL);
        if (orders_[i].fate || unanswered == 0 || progress_[i].isSaidUnanswered)
            continue;
        progress_[i].isSaidUnanswered = true;
        if (!readsBack_)
            settleUnread(i, "and it is not to be read back");
        else
            say("no reply to the write of " + orders_[i].name + (awaitsReading(i) ? "; it will be read back" : ""));
    }
}

std::size_t WriteReport::cellsThatAre(std::size_t index, Cell cell) const
{
    const std::vector<Cell> &cells = progress_[index].cells;
    return static_cast<std::size_t>(std::count(cells.begin(), cells.end(), cell));
}

// All of it was sent. What the PLC holds instead of a refused value is worth knowing, too.
bool WriteReport::awaitsReading(std::size_t index) const
{
    const Progress &progress = progress_[index];
    const bool isOpen = !orders_[index].fate && cellsThatAre(index, Cell::REFUSED) == 0;
    return readsBack_ && (isOpen || orders_[index].fate == Fate::REFUSED) && !orders_[index].held && !progress.isUnreadable
           && cellsThatAre(index, Cell::UNSENT) + cellsThatAre(index, Cell::AGAIN) == 0;
}

void WriteReport::noteRead(const FRAME_PRO &request)
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (!awaitsReading(i))
            continue;
        AwaitedWords &unread = progress_[i].unread;
        if (unread.settle(request.regType, request.address, request.count) > 0 && unread.complete())
            compare(i);
    }
}

void WriteReport::compare(std::size_t index)
{
    Order &order = orders_[index];
    order.held = runtime_.values(order.item);
    if (order.fate)
        return;
    const std::string held = shownValue(order.format, *order.held);
    if (*order.held == order.data)
        settle(index, Fate::VERIFIED, "done: " + order.name + " = " + held);
    else if (cellsThatAre(index, Cell::DONE) == progress_[index].cells.size())
        settle(index, Fate::DIFFERS, "differs: " + order.name + " was to be "
                                              + shownValue(order.format, order.data) + ", the PLC holds " + held);
    else
        settle(index, Fate::UNCONFIRMED, "unconfirmed: " + order.name + ": the PLC holds " + held
                                                  + " so far; the write may still arrive");
}

void WriteReport::settle(std::size_t index, Fate fate, const std::string &text)
{
    orders_[index].fate = fate;
    orders_[index].text = text;
    if ((fate != Fate::VERIFIED || !resultCall_) && (fate != Fate::DIFFERS || saysDifferences_))
        say(text);
}

void WriteReport::settleRefused()
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const std::size_t refused = cellsThatAre(i, Cell::REFUSED);
        if (orders_[i].fate || refused == 0)
            continue;
        const std::size_t done = cellsThatAre(i, Cell::DONE);
        const std::string part = done > 0 ? "; the first " + std::to_string(done) + " of "
                                                + std::to_string(progress_[i].cells.size()) + " were written"
                                          : "";
        settle(i, Fate::REFUSED, "refused: " + orders_[i].name + ": " + progress_[i].refusal + part);
        sayHint(orders_[i].endCode);
    }
}

// The line of a refusal for the operating mode says itself what to do.
void WriteReport::sayHint(std::uint16_t endCode)
{
    if (!isModeEndCode(endCode) && hinted_.insert(endCode).second)
        say("hint: " + endCodeHint(endCode));
}

void WriteReport::settleUnread(std::size_t index, const std::string &why)
{
    const bool isDone = cellsThatAre(index, Cell::DONE) == progress_[index].cells.size();
    settle(index, Fate::UNCONFIRMED, "unconfirmed: " + orders_[index].name + ": "
                                              + (isDone ? "the PLC acknowledged the write" : "no reply to the write")
                                              + ", " + why);
}

bool WriteReport::settled()
{
    bool all = true;
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        progress_[i].isUnreadable = awaitsReading(i) && runtime_.leavesOut(orders_[i].item);
        if (progress_[i].isUnreadable && !orders_[i].fate)
            settleUnread(i, "and refuses to read it back");
        all = all && !awaitsReading(i);
    }
    return all && mode_ == Mode::NOT_ASKED;
}

std::vector<Item> WriteReport::openItems() const
{
    std::vector<Item> items;
    for (const Order &order : orders_) {
        if (!order.fate)
            items.push_back(order.item);
    }
    return items;
}

void WriteReport::end(std::size_t index, const std::string &reason)
{
    const std::size_t all    = progress_[index].cells.size();
    const std::size_t unsent = cellsThatAre(index, Cell::UNSENT);
    const std::string &name  = orders_[index].name;
    if (unsent == all)
        settle(index, Fate::NOT_SENT, "not sent: " + name + ": " + reason);
    else if (unsent > 0)
        settle(index, Fate::UNCONFIRMED, "unconfirmed: " + name + ": " + std::to_string(all - unsent) + " of "
                                                  + std::to_string(all) + " were sent");
    else
        settleUnread(index, "and it was not read back");
}

void WriteReport::finish(const std::string &reason)
{
    if (isFinished_)
        return;
    isFinished_ = true;
    if (mode_ != Mode::NOT_ASKED)
        loseMode();
    replaceCells(Cell::AGAIN, Cell::REFUSED);
    settleRefused();
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (!orders_[i].fate)
            end(i, reason);
    }
    for (const Order &order : orders_) {
        if (resultCall_ && order.held)
            resultCall_(order);
    }
}

WriteVerdict WriteReport::verdict() const
{
    const auto any = [this](Fate a, Fate b) {
        return std::any_of(orders_.begin(), orders_.end(),
                           [=](const Order &order) { return order.fate == a || order.fate == b; });
    };
    if (modeUnknown_ || any(Fate::UNCONFIRMED, Fate::NOT_SENT))
        return WriteVerdict::UNKNOWN;
    return any(Fate::REFUSED, Fate::DIFFERS) ? WriteVerdict::NOT_AS_ASKED : WriteVerdict::DONE;
}
