#include "commands/item_choice.h"

#include "commands/item_file.h"
#include "common/suggestion.h"

#include <algorithm>
#include <fnmatch.h>
#include <map>
#include <set>

namespace {

const char WILDCARDS[] = "*?["; // which no name of a tag and no address has

std::string listText(const std::vector<std::string> &names)
{
    const std::size_t most = 8;
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i)
        text += (i > 0 ? ", " : "") + names[i];
    return text + (names.size() > most ? " and " + std::to_string(names.size() - most) + " more" : "");
}

// Calls `take` for each tag with the book that it is of.
template <typename Take>
void forEachTag(const TagBooks &books, const Take &take)
{
    for (const TagBook *book : books) {
        for (const Tag &tag : book->tags())
            take(*book, tag);
    }
}

std::vector<std::string> namesOf(const TagBooks &books)
{
    std::vector<std::string> names;
    forEachTag(books, [&](const TagBook &, const Tag &tag) { names.push_back(tag.name); });
    return names;
}

// Collects tags by their names.
class Chosen {
public:
    explicit Chosen(const TagBooks &books) : books_(books) {}

    // What is named twice comes twice, unless a pattern has brought it.
    void takeNamed(const std::string &text)
    {
        Tag tag = ownerOf(books_, text).resolve(text, Access::READ);
        if (brought_.count(tag.name) > 0)
            return;
        names_.insert(tag.name);
        tags_.push_back(std::move(tag));
    }

    void takePattern(const std::string &text);
    void takeGroup(const std::string &group);

    void takeAll()
    {
        forEachTag(books_, [this](const TagBook &, const Tag &tag) { tags_.push_back(tag); });
    }

    const std::vector<Tag> &tags() const { return tags_; }

private:
    void bring(Tag tag)
    {
        brought_.insert(tag.name);
        if (names_.insert(tag.name).second)
            tags_.push_back(std::move(tag));
    }

    const TagBooks       &books_;
    std::vector<Tag>      tags_;
    std::set<std::string> names_;   // of tags_
    std::set<std::string> brought_; // by patterns and groups
};

// A data type behind the pattern is that of every tag.
void Chosen::takePattern(const std::string &text)
{
    const std::vector<std::string> names = namesOf(books_);
    if (names.empty())
        throw UsageError("'" + text + "' is a pattern for names of tags, and there are none; name a project with tags by "
                                      "--project FILE");
    const std::size_t slash   = std::min(text.find('/'), text.size());
    const std::string pattern = text.substr(0, slash);
    bool matches = false;
    forEachTag(books_, [&](const TagBook &book, const Tag &tag) {
        if (fnmatch(pattern.c_str(), tag.name.c_str(), 0) != 0)
            return;
        matches = true;
        bring(book.resolve(tag.name + text.substr(slash), Access::READ));
    });
    if (!matches)
        throw UsageError("no tag matches '" + pattern + "'; the tags are " + listText(names));
}

void Chosen::takeGroup(const std::string &group)
{
    const std::vector<std::string> groups = groupsOf(books_);
    if (groups.empty())
        throw UsageError("there is no group '" + group + "': no tag has one; write group = \"NAME\" into the tables of "
                                                         "its tags in a project");
    if (std::find(groups.begin(), groups.end(), group) == groups.end())
        throw UsageError("there is no group '" + group + "'" + hintAt(nearestWord(group, groups)) + "; the groups are "
                         + listText(groups));
    forEachTag(books_, [&](const TagBook &, const Tag &tag) {
        if (tag.group == group)
            bring(tag);
    });
}

} // namespace

const TagBook &ownerOf(const TagBooks &books, const std::string &name)
{
    if (books.size() == 1)
        return *books.front();
    std::vector<std::string> plcs;
    for (const TagBook *book : books) {
        if (name.compare(0, book->plc().size(), book->plc()) == 0)
            return *book;
        plcs.push_back(book->plc().substr(0, book->plc().size() - 1));
    }
    const std::size_t point   = std::min(name.find('.'), name.size());
    const std::string nearest = nearestWord(name.substr(0, point), plcs);
    throw UsageError("'" + name + "' does not begin with the name of a PLC"
                     + hintAt(nearest.empty() ? "" : nearest + name.substr(point)) + "; the PLCs are " + listText(plcs)
                     + ", write " + plcs.front() + ".DM:100 for an item of one");
}

std::vector<Tag> chosenTags(const TagBooks &books, const ItemChoice &choice)
{
    Chosen chosen(books);
    if (choice.isEmpty())
        chosen.takeAll();
    forEachItem(choice.items, choice.file, [&chosen](const std::string &text) {
        if (text.find_first_of(WILDCARDS) != std::string::npos)
            chosen.takePattern(text);
        else
            chosen.takeNamed(text);
    });
    for (const std::string &group : choice.groups)
        chosen.takeGroup(group);
    return chosen.tags();
}

std::vector<TagWrite> chosenWrites(const TagBooks &books, const ItemChoice &choice)
{
    std::vector<TagWrite> writes;
    std::map<std::string, std::vector<Item>> items; // of each PLC
    forEachItem(choice.items, choice.file, [&](const std::string &text) {
        writes.push_back(ownerOf(books, text).resolveWrite(text));
        items[writes.back().tag.plc].push_back(writes.back().tag.item);
    });
    for (const auto &[plc, ofPlc] : items)
        refuseOverlaps(ofPlc);
    return writes;
}

std::vector<std::string> groupsOf(const TagBooks &books)
{
    std::vector<std::string> groups;
    forEachTag(books, [&](const TagBook &, const Tag &tag) {
        if (!tag.group.empty() && std::find(groups.begin(), groups.end(), tag.group) == groups.end())
            groups.push_back(tag.group);
    });
    return groups;
}
