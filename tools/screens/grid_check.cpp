#include "screens/grid_check.h"

namespace {

bool isGroup(const ScreenElement &element)
{
    return element.kind == ElementKind::GROUP;
}

bool touches(const ScreenElement &a, const ScreenElement &b)
{
    return a.column < b.column + b.columns && b.column < a.column + a.columns && a.row < b.row + b.rows
           && b.row < a.row + a.rows;
}

bool liesIn(const ScreenElement &inner, const ScreenElement &outer)
{
    return inner.column >= outer.column && inner.column + inner.columns <= outer.column + outer.columns
           && inner.row >= outer.row && inner.row + inner.rows <= outer.row + outer.rows;
}

std::string placeText(Place place)
{
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

class GridCheck {
public:
    GridCheck(const std::vector<ScreenElement> &elements, const std::vector<Place> &places, const std::string &file,
              Problems &problems)
        : elements_(elements), places_(places), file_(file), problems_(problems), isReported_(elements.size())
    {
    }

    // Of two that lie one over the other.
    void check(std::size_t first, std::size_t second);

private:
    void report(std::size_t index, const std::string &text);

    const std::vector<ScreenElement> &elements_;
    const std::vector<Place>         &places_;
    const std::string                &file_;
    Problems                         &problems_;
    std::vector<bool>                 isReported_; // once is enough
};

void GridCheck::report(std::size_t index, const std::string &text)
{
    if (!isReported_[index])
        problems_.add(file_, places_[index], text);
    isReported_[index] = true;
}

void GridCheck::check(std::size_t first, std::size_t second)
{
    const ScreenElement &a = elements_[first];
    const ScreenElement &b = elements_[second];
    const bool isIn  = isGroup(a) && liesIn(b, a);
    const bool holds = isGroup(b) && liesIn(a, b);
    if (isIn != holds)
        return;
    const bool areSameFrame = isIn;
    if (areSameFrame || (!isGroup(a) && !isGroup(b))) {
        report(second, "this element overlaps the one of " + placeText(a.place) + "; move one, or make it smaller");
        return;
    }
    report(isGroup(a) ? second : first, "this element crosses the edge of the group of "
                                            + placeText((isGroup(a) ? a : b).place)
                                            + "; put it inside as a whole, or outside");
}

} // namespace

void checkGrid(const std::vector<ScreenElement> &elements, const std::vector<Place> &places, const std::string &file,
               Problems &problems)
{
    GridCheck grid(elements, places, file, problems);
    for (std::size_t second = 1; second < elements.size(); ++second) {
        for (std::size_t first = 0; first < second; ++first) {
            if (touches(elements[first], elements[second]))
                grid.check(first, second);
        }
    }
}
