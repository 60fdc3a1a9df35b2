#include "model/panel.h"

#include "model/alarm_words.h"
#include "model/project_screens.h"

#include <algorithm>

Panel::Panel(const std::vector<PlcSource> &sources, const std::string &folder) : saver_(folder)
{
    for (const PlcSource &source : sources) {
        const std::string &project = source.config.project;
        Station &station  = stations_.emplace_back(source.config);
        ScreenBook &book  = books_.emplace_back(project.empty() ? ScreenBook() : readProjectScreens(project, station));
        AlarmBook &alarms = alarms_.emplace_back(book.alarms);
        std::vector<std::string> names = source.items;
        for (const fins::TagConfig &tag : station.tags())
            names.push_back(tag.name);
        station.watch(names, listenerOf(station, alarms, trends_.size()));
        trends_.emplace_back(station.trends());
        if (book.screens.empty() || !source.items.empty())
            addCards(station, source.items);
        for (const Screen &screen : book.screens)
            screens_.push_back({&station, screen.title.empty() ? screen.name : screen.title, &screen, {}});
    }
}

Panel::~Panel()
{
    close();
}

StationListener Panel::listenerOf(Station &station, AlarmBook &book, std::size_t index)
{
    StationListener listener;
    listener.onValue = [this, &station, &book, index](LiveValue &value) {
        const AlarmTime now = {std::chrono::system_clock::now(), std::chrono::steady_clock::now()};
        if (value.trend)
            trends_[index].add(*value.trend, trendTimeOf(now.steady), value.number(), value.isGood());
        noteAlarms(station, book, book.take(value.tag.tag, value.tag.index, value.sample.quality, value.sample.value, now));
    };
    listener.onWriteEnd  = [this, &station](const WriteEnd &end) { noteWrite(station, end); };
    listener.onRecipeEnd = [this, &station](const RecipeEnd &end) { noteRecipe(station, end); };
    listener.onLink      = [this, &station](const std::string &line) {
        journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::LINK, station.host(), "", "", "", line});
    };
    return listener;
}

void Panel::noteWrite(const Station &station, const WriteEnd &end)
{
    journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::WRITE, station.host(), end.outcome.name, end.oldText,
                  end.outcome.wanted, end.outcome.text});
    if (isClosing_ && !fins::isDone({end.outcome}))
        ends_.push_back(end.outcome.text);
}

void Panel::noteRecipe(const Station &station, const RecipeEnd &end)
{
    for (const fins::Outcome &outcome : end.outcomes) {
        journal_.add({std::chrono::system_clock::now(), JournalEvent::Kind::WRITE, station.host(), outcome.name, "", // not read before
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
        journal_.add({event.utc, JournalEvent::Kind::ALARM, station.host(), rule.name, "", "",
                      std::string(text(event.kind)) + ": " + rule.text});
    }
}

void Panel::tick()
{
    const AlarmTime now = {std::chrono::system_clock::now(), std::chrono::steady_clock::now()};
    for (std::size_t i = 0; i < alarms_.size(); ++i)
        noteAlarms(stations_[i], alarms_[i], alarms_[i].tick(now));
    for (TrendStore &trends : trends_)
        trends.advance(trendTimeOf(now.steady));
    saver_.deliver();
}

const TrendStore &Panel::trendsOf(const Station &station) const
{
    const auto isIt = [&](const Station &one) { return &one == &station; };
    return trends_[static_cast<std::size_t>(std::find_if(stations_.begin(), stations_.end(), isIt) - stations_.begin())];
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

// Cards of the command line are one screen; those of a project's tags have the screens that the tags name.
void Panel::addCards(Station &station, const std::vector<std::string> &items)
{
    std::vector<PanelScreen> made;
    const auto screenOf = [&](const std::string &title) -> PanelScreen & {
        const auto found = std::find_if(made.begin(), made.end(), [&](const PanelScreen &one) { return one.title == title; });
        return found != made.end() ? *found : made.emplace_back(PanelScreen{&station, title, nullptr, {}});
    };
    for (const LiveValue &value : station.values()) {
        const bool isItem = std::find(items.begin(), items.end(), value.tag.tag) != items.end();
        if (!items.empty() && !isItem)
            continue;
        std::string title = station.host();
        for (const fins::TagConfig &tag : station.tags()) {
            if (!isItem && tag.name == value.tag.tag && !tag.screen.empty())
                title = tag.screen;
        }
        screenOf(title).cards.push_back(value.tag);
    }
    screens_.insert(screens_.end(), made.begin(), made.end());
}

template <typename Condition>
static std::size_t indexOf(const std::vector<PanelScreen> &screens, Condition condition)
{
    return static_cast<std::size_t>(std::find_if(screens.begin(), screens.end(), condition) - screens.begin());
}

std::size_t Panel::findScreen(const Station &station, const std::string &name) const
{
    return indexOf(screens_, [&](const PanelScreen &screen) {
        return screen.station == &station && screen.screen && screen.screen->name == name;
    });
}

std::size_t Panel::findScreen(const std::string &name) const
{
    return indexOf(screens_, [&](const PanelScreen &screen) {
        return screen.title == name || (screen.screen && screen.screen->name == name);
    });
}
