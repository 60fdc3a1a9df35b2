#include "session/watch_values.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

std::vector<WatchedValue> singleValues(const std::vector<Tag> &tags)
{
    std::vector<WatchedValue> values;
    std::set<std::string> names;
    for (std::size_t place = 0; place < tags.size(); ++place) {
        const Tag &tag     = tags[place];
        const bool whole   = tag.format.type == DataType::STRING || tag.valueCount() == 1;
        const bool isNamed = tag.name != tag.plc + itemName(tag.item, tag.format);
        const qint32 size  = whole ? tag.item.count : wordsPerValue(tag.format.type);
        const std::vector<Item> items = cutItem(tag.item, size);
        values.reserve(values.size() + items.size());
        for (const Item &item : items) {
            std::string name = isNamed ? tag.name : tag.plc + itemName(item, tag.format);
            if (isNamed && !whole)
                name += "[" + std::to_string((item.address - tag.item.address) / size) + "]";
            if (names.insert(name).second)
                values.push_back({name, item, tag.format, "", Quality::NOT_CONNECTED, TimePoint(), 0, {}, place});
        }
    }
    return values;
}

static Quality unconfirmed(const WatchedValue &value)
{
    return value.text.empty() ? Quality::NOT_CONNECTED : Quality::LAST_KNOWN;
}

WatchValues::WatchValues(Runtime &runtime, std::function<std::vector<Item>()> pending)
    : runtime_(runtime), pendingItems_(std::move(pending)), anyPending_(!pendingItems_().empty()), changes_(0),
      silent_(true)
{
    installChangeFeed(runtime.library(), true);
    calls_.push_back(runtime.onExchange([this](const Exchange &exchange) { noteExchange(exchange); }));
    calls_.push_back(runtime.onLost([this] { noteLost(); }));
}

WatchValues::WatchValues(Runtime &runtime, const std::vector<Tag> &tags, const std::vector<Item> &others,
                         std::function<std::vector<Item>()> pending)
    : WatchValues(runtime, std::move(pending))
{
    watch(tags, others);
}

void WatchValues::watch(const std::vector<Tag> &tags, const std::vector<Item> &others)
{
    std::vector<Item> items = itemsOf(tags);
    items.insert(items.end(), others.begin(), others.end());
    runtime_.keep(items);
    std::map<std::string, WatchedValue *> known;
    for (WatchedValue &value : values_)
        known[value.name] = &value;
    std::vector<WatchedValue> values = singleValues(tags);
    AwaitedWords stale;
    for (WatchedValue &value : values) {
        const auto found = known.find(value.name);
        const bool isKnown = found != known.end();
        const std::size_t tag = value.tag;
        if (isKnown)
            value = *found->second;
        value.tag = tag;
        if (!isKnown || stale_.awaits(value.item) || value.quality == Quality::WRITE_PENDING)
            stale.expect({value.item});
    }
    values_ = std::move(values);
    stale_  = std::move(stale);
    pending_.assign(values_.size(), false);
    inOrder_.clear();
    byAddress_.clear();
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const Item &item = values_[i].item;
        inOrder_.push_back(i);
        for (qint32 at = item.address; at < item.address + item.count; ++at)
            byAddress_.push_back({{at, item.regType}, i});
    }
    std::sort(byAddress_.begin(), byAddress_.end());
    std::stable_sort(inOrder_.begin(), inOrder_.end(), [this](std::size_t a, std::size_t b) {
        return std::tie(values_[a].item.regType, values_[a].item.address)
               < std::tie(values_[b].item.regType, values_[b].item.address);
    });
    notePending();
}

void WatchValues::noteExchange(const Exchange &exchange)
{
    if (anyPending_)
        notePending();
    if (!runtime_.answering()) {
        noteSilence();
        return;
    }
    silent_ = false;
    const Item block = {exchange.request.regType, exchange.request.address, exchange.request.count, false};
    const bool isRead = exchange.kind == RequestKind::READ;
    if (isRead && exchange.accepted)
        noteFresh(block);
    else if (isRead && exchange.leftOut)
        noteRefused(block);
    noteChanges();
}

// What the PLC refuses to read stays refused until it is tried again, or the link is lost.
void WatchValues::noteSilence()
{
    if (silent_)
        return;
    silent_ = true;
    for (WatchedValue &value : values_) {
        stale_.expect({value.item});
        if (value.quality != Quality::REFUSED)
            setQuality(value, unconfirmed(value));
    }
}

void WatchValues::noteLost()
{
    noteSilence();
    for (WatchedValue &value : values_) {
        if (value.quality == Quality::REFUSED)
            setQuality(value, unconfirmed(value));
    }
}

void WatchValues::noteRefused(const Item &block)
{
    for (WatchedValue &value : values_) {
        if (!shareWord(value.item, block))
            continue;
        stale_.expect({value.item});
        setQuality(value, Quality::REFUSED);
    }
}

// The driver notifies no first value of 0, so the first values come from the blocks that were read.
void WatchValues::noteFresh(const Item &block)
{
    if (stale_.complete() || stale_.settle(block.regType, block.address, block.count) == 0)
        return;
    for (const std::size_t i : inOrder_) {
        if (!shareWord(values_[i].item, block) || stale_.awaits(values_[i].item))
            continue;
        refresh(values_[i], pending_[i] ? Quality::WRITE_PENDING : Quality::GOOD);
        if (pending_[i])
            stale_.expect({values_[i].item});
    }
}

// A value of which words are still to be read is taken when the last of them has come. So is one with a pending write:
// the driver notifies what is to be written, too.
void WatchValues::noteChanges()
{
    takeChanges(changed_);
    for (const Change &change : changed_) {
        const Key key(change.address, change.regType);
        auto found = std::lower_bound(byAddress_.begin(), byAddress_.end(), std::make_pair(key, std::size_t(0)));
        for (; found != byAddress_.end() && found->first == key; ++found) {
            WatchedValue &value = values_[found->second];
            if (!stale_.awaits(value.item))
                refresh(value, value.quality);
        }
    }
}

void WatchValues::refresh(WatchedValue &value, Quality quality)
{
    std::vector<quint8> bytes = runtime_.values(value.item);
    const bool isSame = bytes == value.bytes;
    value.bytes = std::move(bytes);
    const std::string text = isSame ? value.text : decodeValues(value.format, value.bytes);
    if (text == value.text) {
        setQuality(value, quality);
        return;
    }
    const std::string old = value.text;
    value.text    = text;
    value.quality = quality;
    if (!old.empty()) {
        value.changedAt = Clock::now();
        ++value.changes;
        ++changes_;
    }
    if (call_)
        call_({old.empty() ? WatchEvent::FIRST : WatchEvent::CHANGE, value, old});
}

void WatchValues::setQuality(WatchedValue &value, Quality quality)
{
    if (value.quality == quality)
        return;
    value.quality = quality;
    if (call_)
        call_({WatchEvent::QUALITY, value, value.text});
}

// Nobody knows what a written value is until it is read back.
void WatchValues::notePending()
{
    const std::vector<Item> items = pendingItems_();
    anyPending_ = !items.empty();
    for (std::size_t i = 0; i < values_.size(); ++i) {
        WatchedValue &value = values_[i];
        const bool pending = std::any_of(items.begin(), items.end(),
                                         [&](const Item &written) { return shareWord(value.item, written); });
        if (pending == pending_[i])
            continue;
        pending_[i] = pending;
        stale_.expect({value.item});
        if (pending && value.quality == Quality::GOOD)
            setQuality(value, Quality::WRITE_PENDING);
    }
}

bool WatchValues::refused() const
{
    return std::any_of(values_.begin(), values_.end(), [](const WatchedValue &value) {
        return value.quality == Quality::REFUSED && value.text.empty();
    });
}

bool WatchValues::covers(const std::vector<Item> &items) const
{
    AwaitedWords words;
    words.expect(items);
    for (const WatchedValue &value : values_)
        words.settle(value.item.wordType(), value.item.firstWord(), value.item.endWord() - value.item.firstWord());
    return words.complete();
}
