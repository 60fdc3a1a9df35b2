#include "expressions/expression.h"

#include "common/numbers.h"

#include <algorithm>

// EXPRESSION is OPERAND, or OPERAND OPERATOR EXPRESSION by the operators' ranks; OPERAND is a number, a word,
// FUNCTION(EXPRESSION, ...), (EXPRESSION), - OPERAND, or not COMPARISON.

namespace plc {

namespace {

enum : int { RANK_LEAST = 1, RANK_COMPARISON = 3, RANK_SIGN = 6 };

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

enum class TokenKind { END, NUMBER, WORD, SYMBOL };

struct Token {
    TokenKind   kind = TokenKind::END;
    std::size_t at = 0;
    std::string text;
};

// An address belongs to its word, with its colon and point.
std::size_t wordEnd(const std::string &text, std::size_t at)
{
    bool isAddress = false;
    for (; at < text.size(); ++at) {
        const bool isMark = text[at] == ':' || (isAddress && text[at] == '.');
        if (!isLetter(text[at]) && !isDigit(text[at]) && !isMark)
            break;
        isAddress = isAddress || text[at] == ':';
    }
    return at;
}

Token tokenAt(const std::string &text, std::size_t at)
{
    at = std::min(text.find_first_not_of(" \t", at), text.size());
    if (at == text.size())
        return {TokenKind::END, at, ""};
    std::size_t end = at + 1;
    TokenKind kind = TokenKind::SYMBOL;
    if (isDigit(text[at])) {
        kind = TokenKind::NUMBER;
        end = std::min(text.find_first_not_of("0123456789", at), text.size());
    } else if (isLetter(text[at])) {
        kind = TokenKind::WORD;
        end = wordEnd(text, at);
    } else if (end < text.size() && text[end] == '=' && findOperator(text.substr(at, 2))) {
        ++end;
    } else {
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80u)
            ++end; // the whole of a character of UTF-8
    }
    return {kind, at, text.substr(at, end - at)};
}

class Reader {
public:
    Reader(const std::string &read, Vocabulary &words, Expression &made)
        : text(read), vocabulary(words), expression(made)
    {
        next();
    }

    std::optional<ExpressionProblem> readAll();

private:
    void next();
    void fail(const std::string &what);
    bool isSymbol(const char *symbol) const { return token.kind == TokenKind::SYMBOL && token.text == symbol; }
    void expect(const char *symbol, const std::string &why);
    void readOperators(int least);
    void readOperand();
    void readNumber();
    void readWord();
    void readFunction(const Operation &function);
    void readGroup();

    const std::string               &text;
    Vocabulary                      &vocabulary;
    Expression                      &expression;
    Token                            token;
    std::size_t                      levels = 0;
    std::optional<ExpressionProblem> problem;
};

void Reader::next()
{
    if (!problem)
        token = tokenAt(text, token.at + token.text.size());
}

// What follows is not looked at any more.
void Reader::fail(const std::string &what)
{
    if (!problem)
        problem = ExpressionProblem{token.at, what};
    token = {TokenKind::END, text.size(), ""};
}

void Reader::expect(const char *symbol, const std::string &why)
{
    if (!isSymbol(symbol))
        fail(std::string("'") + symbol + "' is missing " + why);
    else
        next();
}

std::optional<ExpressionProblem> Reader::readAll()
{
    readOperators(RANK_LEAST);
    if (token.kind != TokenKind::END)
        fail("'" + token.text + "' is not understood here; use + - * / % == != < <= > >= and or not between values");
    if (expression.deepest() > Expression::DEPTH_MOST)
        fail("the expression is too deep; name parts of it in [plant.signals]");
    return problem;
}

void Reader::readOperators(int least)
{
    readOperand();
    for (const Operation *found = findOperator(token.text); found && found->rank >= least;
         found = findOperator(token.text)) {
        next();
        readOperators(found->rank + 1);
        expression.addOperation(*found);
        const Operation *const behind = findOperator(token.text);
        if (found->rank == RANK_COMPARISON && behind && behind->rank == RANK_COMPARISON)
            fail("comparisons stand alone; join two by 'and'");
    }
}

void Reader::readOperand()
{
    if (++levels > Expression::DEPTH_MOST)
        fail("the expression is too deep; name parts of it in [plant.signals]");
    if (isSymbol("(")) {
        readGroup();
    } else if (isSymbol("-")) {
        next();
        readOperators(RANK_SIGN);
        expression.addOperation(NEGATE);
    } else if (token.kind == TokenKind::NUMBER) {
        readNumber();
    } else if (token.kind == TokenKind::WORD && token.text == "not") {
        next();
        readOperators(RANK_COMPARISON);
        expression.addOperation(NOT);
    } else if (token.kind == TokenKind::WORD) {
        readWord();
    } else {
        fail((token.text.empty() ? "a value is missing" : "'" + token.text + "' is no value")
             + "; use a number, TYPE:ADDRESS, a name or a function");
    }
    --levels;
}

void Reader::readGroup()
{
    next();
    readOperators(RANK_LEAST);
    expect(")", "behind what the parenthesis holds");
}

void Reader::readNumber()
{
    Number number = 0;
    if (!::readNumber(token.text, number) || number > NUMBER_MOST)
        fail("the number " + token.text + " is too large; use at most " + std::to_string(NUMBER_MOST));
    expression.addNumber(number);
    next();
}

void Reader::readWord()
{
    const Operation *const function = findFunction(token.text);
    Meaning meaning;
    if (function) {
        readFunction(*function);
        return;
    }
    if (token.text == "step") {
        expression.addStep();
    } else if (token.text == "true" || token.text == "false") {
        expression.addNumber(token.text == "true" ? 1 : 0);
    } else {
        const bool isOperator = findOperator(token.text) != nullptr;
        const std::string wrong = isOperator ? "'" + token.text + "' stands between two values"
                                             : vocabulary.find(token.text, &meaning);
        if (!wrong.empty())
            fail(wrong);
        expression.addMeaning(meaning);
    }
    next();
}

void Reader::readFunction(const Operation &function)
{
    const std::string usage = std::string("; use ") + function.usage;
    next();
    expect("(", "behind " + std::string(function.name) + usage);
    for (unsigned i = 0; i < function.arguments; ++i) {
        if (i > 0)
            expect(",", "before the next argument" + usage);
        readOperators(RANK_LEAST);
    }
    expect(")", "behind the arguments" + usage);
    expression.addOperation(function);
}

} // namespace

std::optional<ExpressionProblem> readExpression(const std::string &text, Vocabulary &vocabulary, Expression *expression)
{
    Expression read;
    std::optional<ExpressionProblem> problem = Reader(text, vocabulary, read).readAll();
    if (!problem)
        *expression = read;
    return problem;
}

bool isFreeName(const std::string &name)
{
    const bool isWord = !name.empty() && isLetter(name[0]) &&
                        std::all_of(name.begin(), name.end(), [](char c) { return isLetter(c) || isDigit(c); });
    const bool isTaken = findFunction(name) || findOperator(name) || name == "not" || name == "step" ||
                         name == "true" || name == "false";
    return isWord && !isTaken;
}

} // namespace plc
