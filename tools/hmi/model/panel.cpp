#include "model/panel.h"

#include "model/alarm_words.h"
#include "model/project_screens.h"

#include <algorithm>

LiveValue *PanelScreen::find(const TagValue &tag) const
{
    for (Station *station : stations) {
        if (LiveValue *value = station->owns(tag.tag) ? station->find(tag) : nullptr)
            return value;
    }
    return nullptr;
}

std::vector<const LiveValue *> PanelScreen::trendValues(const std::vector<TagValue> &tags) const
{
    std::vector<const LiveValue *> found;
    for (const TagValue &tag : tags) {
        const LiveValue *value = find(tag);
        if (value && value->trend)
            found.push_back(value);
    }
    return found;
}

Panel::Panel(const std::vector<PanelSource> &sources, const std::string &folder) : saver_(folder)
{
    std::size_t trends = 0;
    for (const PanelSource &source : sources)
        addSource(source, trends);
    trends_.emplace(trends);
}

// Items that belong to none of the PLCs are given to the first one, which says so.
static std::vector<std::string> itemsOf(const std::vector<Station *> &stations, const Station &station,
                                        const std::vector<std::string> &items)
{
    std::vector<std::string> names;
    for (const std::string &item : items) {
        const auto owner = std::find_if(stations.begin(), stations.end(), [&](const Station *one) { return one->owns(item); });
        if (&station == (owner == stations.end() ? stations.front() : *owner))
            names.push_back(item);
    }
    return names;
}

void Panel::addSource(const PanelSource &source, std::size_t &trends)
{
    std::vector<Station *> stations;
    for (const fins::Config &config : source.plcs)
        stations.push_back(&stations_.emplace_back(config));
    const ScreenBook &book = books_.emplace_back(source.project.empty() ? ScreenBook() : readProjectScreens(source.project, stations));
    for (Station *station : stations) {
        std::vector<AlarmRule> rules;
        std::copy_if(book.alarms.begin(), book.alarms.end(), std::back_inserter(rules),
                     [&](const AlarmRule &rule) { return station->owns(rule.value.tag); });
        AlarmBook &alarms = alarms_.emplace_back(std::move(rules));
        std::vector<std::string> names = itemsOf(stations, *station, source.items);
        for (const fins::TagConfig &tag : station->tags())
            names.push_back(tag.name);
        station->watch(names, listenerOf(*station, alarms), trends);
    }
    if (book.screens.empty() || !source.items.empty())
        addCards(stations, source.items);
    for (const Screen &screen : book.screens)
        screens_.push_back({stations, screen.title.empty() ? screen.name : screen.title, &screen, {}});
}

Panel::~Panel()
{
    close();
}

StationListener Panel::listenerOf(Station &station, AlarmBook &book)
{
    StationListener listener;
    listener.onValue = [this, &station, &book](LiveValue &value) {
        const AlarmTime now = {std::chrono::system_clock::now(), std::chrono::steady_clock::now()};
        if (value.trend)
            trends_->add(*value.trend, trendTimeOf(now.steady), value.number(), value.isGood());
        noteAlarms(station, book, book.take(value.tag.tag, value.tag.index, value.sample.quality, value.sample.value, now));
    };
    listener.onWriteEnd  = [this, &station](const WriteEnd &end) { noteWrite(station, end); };
    listener.onRecipeEnd = [this, &station](const RecipeEnd &end) { noteRecipe(station, end); };
    listener.onLink      = [this, &station](const std::string &line) {
        journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::LINK, station.name(), "", "", "", line});
    };
    return listener;
}

void Panel::noteWrite(const Station &station, const WriteEnd &end)
{
    journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::WRITE, station.name(), end.outcome.name, end.oldText,
                  end.outcome.wanted, end.outcome.text});
    if (isClosing_ && !fins::isDone({end.outcome}))
        ends_.push_back(end.outcome.text);
}

void Panel::noteRecipe(const Station &station, const RecipeEnd &end)
{
    for (const fins::Outcome &outcome : end.outcomes) {
        journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::WRITE, station.name(), outcome.name, "", // not read before
                      outcome.wanted, end.recipe + ": " + outcome.text});
        if (isClosing_ && !fins::isDone({outcome}))
            ends_.push_back(outcome.text);
    }
}

// The most urgent alarm is shown at the value itself.
void Panel::showPriority(Station &station, const AlarmBook &book, const TagValue &tag)
{
    int priority = 0;
    for (std::size_t i = 0; i < book.size(); ++i) {
        const AlarmRule &rule = book.rule(i);
        const bool isOf = rule.value.tag == tag.tag && rule.value.index == tag.index;
        if (isOf && book.status(i).state != AlarmStatus::State::NORMAL && (priority == 0 || rule.priority < priority))
            priority = rule.priority;
    }
    if (LiveValue *value = station.find(tag)) {
        value->alarmPriority = priority;
        ++value->revision;
    }
}

void Panel::noteAlarms(Station &station, const AlarmBook &book, const AlarmEvents &events)
{
    for (const AlarmEvent &event : events) {
        const AlarmRule &rule = book.rule(event.alarm);
        ++alarmRevision_;
        showPriority(station, book, rule.value);
        const bool isJudgement = event.kind == AlarmEvent::Kind::UNKNOWN || event.kind == AlarmEvent::Kind::KNOWN_AGAIN;
        if (isJudgement && event.state == AlarmStatus::State::NORMAL)
            continue;
        journal_.add({event.utc, JournalEvent::Kind::ALARM, station.name(), rule.name, "", "",
                      std::string(text(event.kind)) + ": " + rule.text});
    }
}

void Panel::tick()
{
    const AlarmTime now = {std::chrono::system_clock::now(), std::chrono::steady_clock::now()};
    for (std::size_t i = 0; i < alarms_.size(); ++i)
        noteAlarms(stations_[i], alarms_[i], alarms_[i].tick(now));
    trends_->advance(trendTimeOf(now.steady));
    saver_.deliver();
}

std::vector<Panel::AlarmPlace> Panel::alarms()
{
    std::vector<AlarmPlace> places;
    for (std::size_t i = 0; i < alarms_.size(); ++i) {
        for (const std::size_t alarm : alarms_[i].listed())
            places.push_back({&stations_[i], &alarms_[i], alarm});
    }
    std::stable_sort(places.begin(), places.end(), [](const AlarmPlace &a, const AlarmPlace &b) {
        return std::make_pair(a.status().isAcknowledged, a.rule().priority)
               < std::make_pair(b.status().isAcknowledged, b.rule().priority);
    });
    return places;
}

std::size_t Panel::unknownAlarms() const
{
    std::size_t count = 0;
    for (const AlarmBook &book : alarms_)
        count += book.unknown();
    return count;
}

void Panel::acknowledge(const AlarmPlace &place)
{
    noteAlarms(*place.station, *place.book, place.book->acknowledge(place.alarm, std::chrono::system_clock::now()));
}

void Panel::acknowledgeAll()
{
    for (std::size_t i = 0; i < alarms_.size(); ++i)
        noteAlarms(stations_[i], alarms_[i], alarms_[i].acknowledgeAll(std::chrono::system_clock::now()));
}

std::vector<std::string> Panel::close()
{
    isClosing_ = true;
    for (Station &station : stations_)
        station.close();
    return std::exchange(ends_, {});
}

// Cards of the command line are one screen; those of a project's tags have the screens that the tags name, or one for
// each PLC.
void Panel::addCards(const std::vector<Station *> &stations, const std::vector<std::string> &items)
{
    std::vector<PanelScreen> made;
    const auto screenOf = [&](const std::string &title) -> PanelScreen & {
        const auto found = std::find_if(made.begin(), made.end(), [&](const PanelScreen &one) { return one.title == title; });
        return found != made.end() ? *found : made.emplace_back(PanelScreen{stations, title, nullptr, {}});
    };
    for (Station *station : stations) {
        for (const LiveValue &value : station->values()) {
            const bool isItem = std::find(items.begin(), items.end(), value.tag.tag) != items.end();
            if (!items.empty() && !isItem)
                continue;
            std::string title = isItem ? stations.front()->name() : station->name();
            for (const fins::TagConfig &tag : station->tags()) {
                if (!isItem && tag.name == value.tag.tag && !tag.screen.empty())
                    title = tag.screen;
            }
            screenOf(title).cards.push_back(value.tag);
        }
    }
    screens_.insert(screens_.end(), made.begin(), made.end());
}

template <typename Condition>
static std::size_t indexOf(const std::vector<PanelScreen> &screens, Condition condition)
{
    return static_cast<std::size_t>(std::find_if(screens.begin(), screens.end(), condition) - screens.begin());
}

std::size_t Panel::findScreen(const PanelScreen &from, const std::string &name) const
{
    return indexOf(screens_, [&](const PanelScreen &screen) {
        return screen.stations == from.stations && screen.screen && screen.screen->name == name;
    });
}

std::size_t Panel::findScreen(const std::string &name) const
{
    return indexOf(screens_, [&](const PanelScreen &screen) {
        return screen.title == name || (screen.screen && screen.screen->name == name);
    });
}
