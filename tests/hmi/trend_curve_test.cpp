#include "elements/trend_curve.h"

#include <gtest/gtest.h>

#include <set>

namespace {

// Values as they are, times 1000 later.
const TrendScale PLAIN = {1000, 0, 1};

QPolygonF line(const QVector<QPointF> &points)
{
    return QPolygonF(points);
}

std::vector<QPolygonF> linesOf(const std::vector<TrendBucket> &buckets)
{
    return trendLines(buckets, PLAIN);
}

TEST(TrendLines, OneLineThroughWhatIsJoined)
{
    const std::vector<QPolygonF> lines = linesOf({{0, 10, 5, 5, 5, false, false}, {10, 20, 2, 9, 3, true, false}});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], line({{1000, 5}, {1010, 5}, {1015, 2}, {1015, 9}, {1020, 3}}));
}

TEST(TrendLines, GapGivesTwoLines)
{
    const std::vector<QPolygonF> lines = linesOf({{0, 10, 5, 5, 5, false, false}, {20, 30, 5, 5, 5, false, false}});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], line({{1000, 5}, {1010, 5}}));
    EXPECT_EQ(lines[1], line({{1020, 5}, {1030, 5}}));
}

TEST(TrendLines, BucketWithAGapStandsAlone)
{
    const std::vector<QPolygonF> lines = linesOf(
        {{0, 10, 5, 5, 5, false, false}, {10, 20, 2, 9, 3, true, true}, {20, 30, 3, 3, 3, true, false}});
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1], line({{1015, 2}, {1015, 9}}));
    EXPECT_EQ(lines[2], line({{1020, 3}, {1030, 3}}));
}

TEST(TrendLines, ScaleIsTheTagsOwn)
{
    const std::vector<QPolygonF> lines = trendLines({{0, 10, 50, 50, 50, false, false}}, {0, -100, 100});
    EXPECT_EQ(lines[0], line({{0, 0.75}, {10, 0.75}}));
}

TEST(TrendPen, EveryTagHasItsOwnDashesAndTone)
{
    std::set<std::vector<qreal>> dashes;
    std::set<QRgb> tones;
    for (int i = 0; i < TREND_STYLES; ++i) {
        const QVector<qreal> pattern = trendPen(i, false).dashPattern();
        dashes.emplace(pattern.begin(), pattern.end());
        tones.insert(trendPen(i, false).color().rgb());
    }
    EXPECT_EQ(dashes.size(), 8U);
    EXPECT_EQ(tones.size(), 8U);
    EXPECT_GT(trendPen(3, true).widthF(), trendPen(3, false).widthF());
}

} // namespace
