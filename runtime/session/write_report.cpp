#include "session/write_report.h"

#include "link/fins_codes.h"

#include <algorithm>

WriteReport::WriteReport(Runtime &runtime)
    : runtime_(runtime), mode_(Mode::NOT_ASKED), modeUnknown_(false), isFinished_(false), saysDifferences_(true)
{
    calls_.push_back(runtime.onOrder([this](const FRAME_PRO &request, RequestKind kind) { noteOrder(request, kind); }));
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { noteExchange(exchange); }));
    calls_.push_back(runtime.onLost([this] { noteLost(); }));
}

void WriteReport::add(const std::string &name, const Item &item, const ValueFormat &format,
                      const std::vector<quint8> &data)
{
    orders_.push_back({name, item, format, data});
    progress_.push_back({std::vector<Cell>(static_cast<std::size_t>(item.count), Cell::UNSENT), Coverage(), "", 0, false, false});
}

// Changes the words or bits of the orders that the request writes.
template <typename Change>
void WriteReport::change(const FRAME_PRO &request, Change cellChange)
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const Item &item = orders_[i].item;
        const qint32 begin = std::max(item.address, request.address);
        const qint32 end   = std::min(item.address + item.count, request.address + request.count);
        if (item.regType != request.regType || begin >= end || orders_[i].fate != WriteFate::OPEN)
            continue;
        for (qint32 at = begin; at < end; ++at) {
            Cell &cell = progress_[i].cells[static_cast<std::size_t>(at - item.address)];
            cell = cellChange(cell, progress_[i]);
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
    change(request, [](Cell cell, Progress &) {
        return cell == Cell::SENT || cell == Cell::DOUBTFUL ? Cell::DOUBTFUL : Cell::SENT;
    });
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (orders_[i].fate == WriteFate::OPEN)
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
        change(exchange.request, [](Cell, Progress &) { return Cell::DONE; });
    if (exchange.judgement.verdict != Verdict::REFUSED)
        return;
    const auto endCode = static_cast<std::uint16_t>(exchange.judgement.code);
    std::string text = endCodeText(endCode);
    if (isModeEndCode(endCode) && !exchange.switches)
        text += "; the PLC would have to be in MONITOR mode, for which --allow-mode-change asks it";
    change(exchange.request, [&](Cell cell, Progress &progress) {
        progress.refusal = text;
        progress.endCode = endCode;
        return cell == Cell::DOUBTFUL ? Cell::DOUBTFUL : Cell::REFUSED;
    });
    if (!exchange.switches)
        settleRefused();
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
        if (orders_[i].fate == WriteFate::OPEN)
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
        if (orders_[i].fate != WriteFate::OPEN || unanswered == 0 || progress_[i].isSaidUnanswered)
            continue;
        progress_[i].isSaidUnanswered = true;
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
    const bool isOpen = orders_[index].fate == WriteFate::OPEN && cellsThatAre(index, Cell::REFUSED) == 0;
    return (isOpen || orders_[index].fate == WriteFate::REFUSED) && !orders_[index].held && !progress.isUnreadable
           && cellsThatAre(index, Cell::UNSENT) + cellsThatAre(index, Cell::AGAIN) == 0;
}

void WriteReport::noteRead(const FRAME_PRO &request)
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        if (!awaitsReading(i))
            continue;
        Coverage &unread = progress_[i].unread;
        if (unread.settle(request.regType, request.address, request.count) > 0 && unread.complete())
            compare(i);
    }
}

void WriteReport::compare(std::size_t index)
{
    Order &order = orders_[index];
    order.held = runtime_.values(order.item);
    if (order.fate != WriteFate::OPEN)
        return;
    const std::string held = shownValue(order.format, *order.held);
    if (*order.held == order.data)
        settle(index, WriteFate::DONE, resultCall_ ? "" : "done: " + order.name + " = " + held);
    else if (cellsThatAre(index, Cell::DONE) == progress_[index].cells.size())
        settle(index, WriteFate::DIFFERS, "differs: " + order.name + " was to be "
                                              + shownValue(order.format, order.data) + ", the PLC holds " + held);
    else
        settle(index, WriteFate::UNCONFIRMED, "unconfirmed: " + order.name + ": the PLC holds " + held
                                                  + " so far; the write may still arrive");
}

void WriteReport::settle(std::size_t index, WriteFate fate, const std::string &text)
{
    orders_[index].fate = fate;
    if (!text.empty() && (fate != WriteFate::DIFFERS || saysDifferences_))
        say(text);
}

void WriteReport::settleRefused()
{
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        const std::size_t refused = cellsThatAre(i, Cell::REFUSED);
        if (orders_[i].fate != WriteFate::OPEN || refused == 0)
            continue;
        const std::size_t done = cellsThatAre(i, Cell::DONE);
        const std::string part = done > 0 ? "; the first " + std::to_string(done) + " of "
                                                + std::to_string(progress_[i].cells.size()) + " were written"
                                          : "";
        settle(i, WriteFate::REFUSED, "refused: " + orders_[i].name + ": " + progress_[i].refusal + part);
        sayHint(progress_[i].endCode);
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
    settle(index, WriteFate::UNCONFIRMED, "unconfirmed: " + orders_[index].name + ": "
                                              + (isDone ? "the PLC acknowledged the write" : "no reply to the write")
                                              + ", " + why);
}

bool WriteReport::settled()
{
    bool all = true;
    for (std::size_t i = 0; i < orders_.size(); ++i) {
        progress_[i].isUnreadable = awaitsReading(i) && runtime_.leavesOut(orders_[i].item);
        if (progress_[i].isUnreadable && orders_[i].fate == WriteFate::OPEN)
            settleUnread(i, "and refuses to read it back");
        all = all && !awaitsReading(i);
    }
    return all && mode_ == Mode::NOT_ASKED;
}

std::vector<Item> WriteReport::openItems() const
{
    std::vector<Item> items;
    for (const Order &order : orders_) {
        if (order.fate == WriteFate::OPEN)
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
        settle(index, WriteFate::NOT_SENT, "not sent: " + name + ": " + reason);
    else if (unsent > 0)
        settle(index, WriteFate::UNCONFIRMED, "unconfirmed: " + name + ": " + std::to_string(all - unsent) + " of "
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
        if (orders_[i].fate == WriteFate::OPEN)
            end(i, reason);
    }
    for (const Order &order : orders_) {
        if (resultCall_ && order.held)
            resultCall_(order);
    }
}

WriteVerdict WriteReport::verdict() const
{
    const auto any = [this](WriteFate a, WriteFate b) {
        return std::any_of(orders_.begin(), orders_.end(),
                           [=](const Order &order) { return order.fate == a || order.fate == b; });
    };
    if (modeUnknown_ || any(WriteFate::UNCONFIRMED, WriteFate::NOT_SENT))
        return WriteVerdict::UNKNOWN;
    return any(WriteFate::REFUSED, WriteFate::DIFFERS) ? WriteVerdict::NOT_AS_ASKED : WriteVerdict::DONE;
}
