#include "log/log_values.h"

#include <gtest/gtest.h>

using fins::Quality;
using fins::Sample;

namespace {

Sample numberOf(double value, Quality quality = Quality::GOOD)
{
    Sample sample;
    sample.value   = value;
    sample.text    = std::to_string(value);
    sample.quality = quality;
    return sample;
}

Sample textOf(const std::string &text)
{
    Sample sample;
    sample.value   = text;
    sample.text    = text;
    sample.quality = Quality::GOOD;
    return sample;
}

} // namespace

TEST(DeadBand, IsMeasuredFromWhatWasLogged)
{
    DeadBand band(0.5);
    EXPECT_TRUE(band.passes(numberOf(10)));
    EXPECT_FALSE(band.passes(numberOf(10.3)));
    EXPECT_FALSE(band.passes(numberOf(10.4)));
    EXPECT_TRUE(band.passes(numberOf(10.5)));
    EXPECT_FALSE(band.passes(numberOf(10.1)));
    EXPECT_TRUE(band.passes(numberOf(10)));
}

// Ten steps of a scale of 0.1 are each as large as the band.
TEST(DeadBand, IsReachedByAChangeOfItsWidth)
{
    DeadBand band(0.1);
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(band.passes(numberOf(i / 10.0))) << i;
}

TEST(DeadBand, NoneIsEveryChange)
{
    DeadBand band(0);
    EXPECT_TRUE(band.passes(numberOf(1)));
    EXPECT_FALSE(band.passes(numberOf(1)));
    EXPECT_TRUE(band.passes(numberOf(1.000001)));
}

TEST(DeadBand, HoldsNoChangeOfQualityBack)
{
    DeadBand band(100);
    EXPECT_TRUE(band.passes(numberOf(1, Quality::NOT_CONNECTED)));
    EXPECT_TRUE(band.passes(numberOf(1)));
    EXPECT_TRUE(band.passes(numberOf(1, Quality::LAST_KNOWN)));
    EXPECT_FALSE(band.passes(numberOf(1, Quality::LAST_KNOWN)));
    EXPECT_TRUE(band.passes(numberOf(1)));
}

TEST(DeadBand, IsForNumbersOnly)
{
    DeadBand band(100);
    EXPECT_TRUE(band.passes(textOf("a")));
    EXPECT_TRUE(band.passes(textOf("b")));
    EXPECT_FALSE(band.passes(textOf("b")));
}
