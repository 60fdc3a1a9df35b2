#include "commands/sites.h"

#include <algorithm>
#include <future>
#include <iterator>

TagBooks booksOf(const Sites &sites)
{
    TagBooks books;
    books.reserve(sites.size());
    for (const Site &site : sites)
        books.push_back(&site.book);
    return books;
}

std::vector<Tag> tagsOf(const Site &site, const std::vector<Tag> &tags)
{
    std::vector<Tag> own;
    std::copy_if(tags.begin(), tags.end(), std::back_inserter(own),
                 [&](const Tag &tag) { return tag.plc == site.book.plc(); });
    return own;
}

void forEachAtOnce(std::size_t count, const std::function<void(std::size_t)> &work)
{
    std::vector<std::future<void>> others;
    for (std::size_t i = 1; i < count; ++i)
        others.push_back(std::async(std::launch::async, work, i));
    if (count > 0)
        work(0);
    for (std::future<void> &other : others)
        other.get();
}
