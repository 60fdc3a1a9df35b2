#include "plants/plant_names.h"

#include <gtest/gtest.h>

#include <string>

// Expressions of plants: what they give, and what is said of those that cannot be read.

class ExpressionTest : public ::testing::Test {
protected:
    // The value in the step, with DM:0 = 300, DM:1 = 65535, CIO_bit:0.3 on and flags of timer 2 and counter 3 on.
    plc::Number value(const std::string &text, plc::Number step = 0)
    {
        memory.setWord(plc::AREA_DM, 0, 300);
        memory.setWord(plc::AREA_DM, 1, 65535);
        memory.setBit(plc::AREA_CIO, 0, 3, true);
        memory.setFlag(plc::AREA_T, 2, true);
        memory.setFlag(plc::AREA_C, 3, true);
        plc::Expression expression;
        const auto problem = plc::readExpression(text, names, &expression);
        EXPECT_FALSE(problem) << text << ": " << problem->text;
        plc::Course course{memory, names.quantities, {}, {step, std::mt19937(1)}};
        return expression.value(course);
    }

    std::string problemOf(const std::string &text)
    {
        plc::Expression expression;
        const auto problem = plc::readExpression(text, names, &expression);
        return problem ? std::to_string(problem->at) + " " + problem->text : "none";
    }

    plc::Memory     memory;
    plc::PlantNames names{memory};
};

TEST_F(ExpressionTest, Operators)
{
    const struct {
        const char *text;
        plc::Number value;
    } rows[] = {
        {"7", 7}, {" 2 + 3*4 ", 14}, {"(2 + 3) * 4", 20}, {"10 - 4 - 3", 3}, {"100 / 10 / 5", 2}, {"-7 / 2", -3},
        {"-7 % 4", -3}, {"7 % 4 * 2", 6}, {"2 - -3", 5}, {"- (2 + 3)", -5}, {"1 < 2", 1}, {"2 <= 1", 0},
        {"2 >= 2", 1}, {"2 > 2", 0}, {"3 == 3", 1}, {"3 != 3", 0}, {"1 + 1 == 2 and 3 > 2", 1}, {"0 and 1 or 1", 1},
        {"1 or 0 and 0", 1}, {"not 1 == 2", 1}, {"not not 5", 1}, {"not 0 and 0", 0}, {"5 and 7", 1},
        {"true + true", 2}, {"false", 0}, {"DM:0 + 1", 301}, {"DM:1 + 1", 65536}, {"CIO_bit:0.3 + CIO_bit:0.4", 1},
        {"T_flag:2", 1}, {"T_flag:3", 0}, {"C_flag:2", 0}, {"C_flag:3", 1},
    };
    for (const auto &row : rows)
        EXPECT_EQ(value(row.text), row.value) << row.text;
}

TEST_F(ExpressionTest, NoNumberTrapsOrWraps)
{
    const std::string most = "9223372036854775807";
    EXPECT_EQ(value(most + " + 1"), INT64_MAX);
    EXPECT_EQ(value("-" + most + " - 2"), -INT64_MAX);
    EXPECT_EQ(value(most + " * -2"), -INT64_MAX);
    EXPECT_EQ(value("(-" + most + " - 1) / -1"), INT64_MAX);
    EXPECT_EQ(value("5 / (DM:0 - 300)"), 0);
    EXPECT_EQ(value("5 % (DM:0 - 300)"), 0);
    EXPECT_EQ(value("sine(-" + most + ", " + most + ", 0)"), 0);
    EXPECT_EQ(value("ramp(-" + most + ", " + most + ", " + most + ")", 5), -INT64_MAX + 1);
    EXPECT_EQ(value("noise(5, 4)"), 5);
    EXPECT_EQ(value("lag(0, 10, 0)"), 10);
}

TEST_F(ExpressionTest, FunctionsOfTheStep)
{
    const struct {
        const char *text;
        plc::Number steps[6];
    } rows[] = {
        {"step", {0, 1, 2, 3, 4, 5}},
        {"ramp(10, 30, 4)", {10, 15, 20, 25, 30, 10}},
        {"ramp(3, 0, 2)", {3, 2, 0, 3, 2, 0}},          // 1.5 of 3, towards zero
        {"sine(0, 200, 4)", {100, 200, 100, 0, 100, 200}},
        {"sine(0, 2, 12)", {1, 2, 2, 2, 2, 2}},         // 1.5 goes up
        {"square(-1, 1, 4)", {1, 1, -1, -1, 1, 1}},
        {"square(0, 1, 3)", {1, 1, 0, 1, 1, 0}},
    };
    for (const auto &row : rows)
        for (plc::Number step = 0; step < 6; ++step)
            EXPECT_EQ(value(row.text, step), row.steps[step]) << row.text << " in step " << step;
}

// The Mersenne Twister MT19937 begins with 1791095845, 4282876139, 3093770124 for the seed 1: rests by 10 are 5, 9, 4.
TEST_F(ExpressionTest, NoiseIsTheSeeds)
{
    EXPECT_EQ(value("noise(0, 9) * 100 + noise(0, 9) * 10 + noise(0, 9)"), 594);
    EXPECT_EQ(value("noise(-3, 6)"), 2);
}

TEST_F(ExpressionTest, OtherFunctions)
{
    const struct {
        const char *text;
        plc::Number value;
    } rows[] = {
        {"counter(8, 9)", 9}, {"counter(9, 9)", 0}, {"counter(65535, 9)", 0}, {"lag(0, 100, 10)", 10},
        {"lag(100, 0, 10)", 90}, {"lag(97, 100, 10)", 98}, {"lag(3, 0, 10)", 2}, {"lag(5, 5, 10)", 5},
        {"integrate(95, 10, 0, 100)", 100}, {"integrate(5, -10, 0, 100)", 0}, {"integrate(5, 10, 0, 100)", 15},
        {"if(2, 3, 4)", 3}, {"if(0, 3, 4)", 4}, {"min(3, 4)", 3}, {"max(3, 4)", 4}, {"clamp(5, 7, 9)", 7},
        {"clamp(8, 7, 9)", 8}, {"clamp(10, 7, 9)", 9}, {"abs(-4)", 4}, {"abs(4)", 4},
    };
    for (const auto &row : rows)
        EXPECT_EQ(value(row.text), row.value) << row.text;
}

TEST_F(ExpressionTest, MistakesAreToldWithTheirPlace)
{
    const std::string value = "; use a number, TYPE:ADDRESS, a name or a function";
    const std::string operators = "; use + - * / % == != < <= > >= and or not between values";
    const std::string deep = "the expression is too deep; name parts of it in [plant.signals]";
    const struct {
        std::string text;
        std::string problem;
    } rows[] = {
        {"", "0 a value is missing" + value},
        {"1 +", "3 a value is missing" + value},
        {"1 + * 2", "4 '*' is no value" + value},
        {"1 2", "2 '2' is not understood here" + operators},
        {"a1 = 2", "0 'a1' is no name here; use TYPE:ADDRESS, or a name of [plant.values] or of a signal above"},
        {"1 = 2", "2 '=' is not understood here" + operators},
        {"(1 + 2", "6 ')' is missing behind what the parenthesis holds"},
        {"1 < 2 < 3", "6 comparisons stand alone; join two by 'and'"},
        {"1 and and 2", "6 'and' stands between two values"},
        {"min(1)", "5 ',' is missing before the next argument; use min(A, B)"},
        {"min(1, 2, 3)", "8 ')' is missing behind the arguments; use min(A, B)"},
        {"min 1", "4 '(' is missing behind min; use min(A, B)"},
        {"mni(1, 2)", "0 'mni' is no name here (did you mean 'min'?); use TYPE:ADDRESS, or a name of [plant.values] or "
                      "of a signal above"},
        {"DM:40000", "0 '40000' is no address of the area; use 0 to 32767"},
        {"DM:0:2", "0 'DM:0:2' has a count; name one item by TYPE:ADDRESS"},
        {"9223372036854775808", "0 the number 9223372036854775808 is too large; use at most 9223372036854775807"},
        {"1 \xC3\xA4 2", "2 '\xC3\xA4' is not understood here" + operators},
        {std::string(70, '(') + "1" + std::string(70, ')'), "64 " + deep},
    };
    for (const auto &row : rows)
        EXPECT_EQ(problemOf(row.text), row.problem) << row.text;
}
