#include "model/station.h"

// For a recipe of many frames on a slow link.
static const std::chrono::minutes RECIPE_TIME{2};

Station::Station(const fins::Config &config)
    : plc_(fins::Plc::open(config)), name_(config.name.empty() ? config.host : config.name),
      prefix_(config.name.empty() ? "" : config.name + "."), tags_(plc_.tags()), recipes_(plc_.recipes()), state_(plc_.state())
{
}

const fins::TagConfig *Station::tagOf(const std::string &name) const
{
    for (const fins::TagConfig &tag : tags_) {
        if (tag.name == name)
            return &tag;
    }
    return nullptr;
}

// Samples come in the order of the names, as many for each as it has values.
void Station::addValues(const std::vector<std::string> &names, std::size_t &trends)
{
    fins::Samples samples = plc_.snapshot(names);
    std::size_t next = 0;
    for (const std::string &name : names) {
        const fins::TagConfig *tag = tagOf(name);
        fins::TagConfig item;
        item.name = item.item = name;
        const fins::TagConfig &known = tag ? *tag : item;
        const std::size_t count = valueCountOf(known);
        for (std::size_t i = 0; i < count && next < samples.size(); ++i, ++next) {
            LiveValue value;
            value.station = this;
            value.tag     = {name, i};
            value.label   = count == 1 && !known.comment.empty() ? known.comment : samples[next].name;
            value.kind    = kindOf(known);
            value.minimum = known.minimum;
            value.maximum = known.maximum;
            value.decimals = known.decimals;
            if (value.kind != ValueKind::TEXT)
                value.trend = trends++;
            if (known.readOnly)
                value.lock = "the tag can only be read";
            else if (count != 1)
                value.lock = "a tag of several values is written by a recipe";
            value.sample  = std::move(samples[next]);
            values_.push_back(std::move(value));
        }
    }
}

void Station::watch(const std::vector<std::string> &names, StationListener listener, std::size_t &trends)
{
    listener_ = std::move(listener);
    addValues(names, trends);
    handles_.push_back(plc_.watch(names, [this](const fins::Samples &samples) { take(samples); }));
    handles_.push_back(plc_.onState([this](const fins::State &state) { take(state); }));
}

// The link comes and goes, and may stay away for another reason than before; of the attempts between nobody wants to read.
void Station::take(const fins::State &state)
{
    using fins::Phase;
    const bool isNews = state.phase == Phase::ONLINE ? !told_.empty() : state.phase == Phase::WAITING && state.reason != told_;
    state_ = state;
    for (LiveValue &value : values_)
        ++value.revision;
    if (!isNews)
        return;
    told_ = state.phase == Phase::ONLINE ? "" : state.reason;
    listener_.onLink(told_.empty() ? "online: this panel is node " + std::to_string(state.ownNode) + ", the PLC is node "
                                         + std::to_string(state.plcNode)
                                   : "no link: " + told_);
}

void Station::take(const fins::Samples &samples)
{
    for (const fins::Sample &sample : samples) {
        LiveValue &value = values_[sample.index];
        if (value.isGood())
            value.goodUntil = std::chrono::steady_clock::now();
        value.sample = sample;
        ++value.revision;
        listener_.onValue(value);
    }
}

LiveValue *Station::find(const TagValue &tag)
{
    for (LiveValue &value : values_) {
        if (value.tag.tag == tag.tag && value.tag.index == tag.index)
            return &value;
    }
    return nullptr;
}

void Station::write(LiveValue &value, const std::string &text, std::chrono::milliseconds giveUp)
{
    fins::OperationOptions options;
    options.giveUp = giveUp;
    const auto order = orders_.insert(orders_.end(), {&value, shownText(value.sample), {}});
    ++value.writesUnderWay;
    ++value.revision;
    order->operation = plc_.write({{value.tag.tag, fins::Value(text)}},
                                  [this, order](const fins::Outcomes &outcomes) { endOrder(order, outcomes); }, options);
}

void Station::endOrder(Place order, const fins::Outcomes &outcomes)
{
    LiveValue &value = *order->value;
    const WriteEnd end = {&value, order->oldText, outcomes.front()};
    --value.writesUnderWay;
    ++value.revision;
    value.fate     = end.outcome;
    value.fateTime = std::chrono::steady_clock::now();
    orders_.erase(order);
    listener_.onWriteEnd(end);
}

void Station::writeRecipe(const std::string &recipe, fins::Plc::ProgressCall onProgress,
                          std::function<void(const RecipeEnd &)> onEnd)
{
    fins::OperationOptions options;
    options.giveUp = RECIPE_TIME;
    const auto order = orders_.insert(orders_.end(), {nullptr, "", {}});
    order->operation = plc_.writeRecipe(recipe, [this, order, recipe, onEnd = std::move(onEnd)](const fins::Outcomes &outcomes) {
        const auto tell = onEnd; // this call goes with its order
        const RecipeEnd end = {recipe, outcomes};
        orders_.erase(order);
        listener_.onRecipeEnd(end);
        if (tell)
            tell(end);
    }, options, std::move(onProgress));
}

void Station::takeBack(const LiveValue &value)
{
    for (Order &order : orders_) {
        if (order.value == &value)
            order.operation.cancel();
    }
}

std::string Station::lock() const
{
    if (state_.phase == fins::Phase::ONLINE)
        return "";
    if (state_.phase == fins::Phase::SILENT)
        return "no answer";
    return "no link";
}

std::string Station::lockOf(const LiveValue &value)
{
    if (!value.lock.empty())
        return value.lock;
    std::string link = value.station->lock();
    if (!link.empty() || value.isGood())
        return link;
    return std::string("the value is ") + fins::text(value.sample.quality);
}

void Station::dispatch()
{
    plc_.dispatch();
}

void Station::close()
{
    plc_.close();
    while (plc_.dispatch()) {
    }
}
