#include "language/BooleanParser.h"

#include <algorithm>
#include <set>
#include <span>
#include <string>

#include "language/UnicodeText.h"

namespace quester {

namespace {

using Kind = BoolToken::Kind;

// Deeper nesting than this is read flat, so that no token list can exhaust the
// stack; a query refuses far less (QueryLimits).
constexpr int maximumNesting = 200;

class Tokens {
public:
    void append(BoolToken token, bool afterColon) {
        if (afterColon && !colonSeen) {
            colonSeen = true;
            if (!list.empty()) {
                const Kind last = list.back().kind;
                if (last == Kind::word || last == Kind::command || last == Kind::rparen)
                    list.push_back(BoolToken::of(Kind::colonAnd));
            }
        }
        list.push_back(std::move(token));
    }

    void appendSplittingOnParens(const SentenceComponent& word) {
        const bool hasParen = word.textOriginalCase.find_first_of("()") != std::string::npos;
        const SentenceComponent::Wildcard wildcard = hasParen ? SentenceComponent::Wildcard::none : word.wildcard;
        std::string buffer;
        for (std::string_view c : graphemes(word.textOriginalCase)) {
            if (c == "(" || c == ")") {
                flush(buffer, wildcard, word.isAfterAColon);
                append(BoolToken::of(c == "(" ? Kind::lparen : Kind::rparen), word.isAfterAColon);
            } else {
                buffer += c;
            }
        }
        flush(buffer, wildcard, word.isAfterAColon);
    }

    std::vector<BoolToken> list;

private:
    void flush(std::string& buffer, SentenceComponent::Wildcard wildcard, bool afterColon) {
        if (buffer.empty()) return;
        if (buffer.front() == '-') {
            append(BoolToken::of(Kind::notOp), afterColon);
            buffer.erase(0, 1);
        }
        if (!buffer.empty()) append(BoolToken{Kind::word, BooleanWord(buffer, wildcard), 0}, afterColon);
        buffer.clear();
    }

    bool colonSeen = false;
};

std::optional<Kind> operatorKind(const SentenceComponent& word) {
    if (word.textOriginalCase == "(") return Kind::lparen;
    if (word.textOriginalCase == ")") return Kind::rparen;
    if (word.textLowered == "or") return Kind::orOp;
    if (word.textLowered == "and") return Kind::andOp;
    if (word.textOriginalCase == "NOT") return Kind::notOp;
    return std::nullopt;
}

struct Join {
    int precedence = 0;
    bool consumed = false;
    bool isOr = false;
};

// The operands joined left to right, halves first: three operands give
// ((a, b), c) as a left-to-right reading does.
BooleanExpr joinedBalanced(std::span<const BooleanExpr> operands, bool isOr) {
    if (operands.size() == 1) return operands.front();
    const size_t half = (operands.size() + 1) / 2;
    BooleanExpr left = joinedBalanced(operands.first(half), isOr);
    BooleanExpr right = joinedBalanced(operands.subspan(half), isOr);
    return isOr ? BooleanExpr::makeOr(std::move(left), std::move(right))
                : BooleanExpr::makeAnd(std::move(left), std::move(right));
}

Join joinFor(Kind kind) {
    switch (kind) {
        case Kind::andOp:
            return {2, true, false};
        case Kind::colonAnd:
            return {0, true, false};
        case Kind::orOp:
            return {1, true, true};
        default:
            return {2, false, false};
    }
}

}  // namespace

std::vector<BoolToken> BooleanParser::tokenizeUnified(
    const std::vector<SentenceComponent>& words, const std::function<bool(const SentenceComponent&)>& isRecognised,
    const std::function<std::optional<int>(const SentenceComponent&)>& commandForPart) {
    Tokens tokens;
    std::set<int> seen;
    for (const SentenceComponent& word : words) {
        if (const std::optional<int> index = commandForPart ? commandForPart(word) : std::nullopt) {
            if (seen.insert(*index).second) tokens.append(BoolToken{Kind::command, std::nullopt, *index}, true);
        } else if (isRecognised && isRecognised(word)) {
            continue;
        } else if (word.wasInQuotes) {
            tokens.append(BoolToken{Kind::word, BooleanWord(word.textOriginalCase, word.wildcard), 0},
                          word.isAfterAColon);
        } else if (const std::optional<Kind> kind = operatorKind(word)) {
            tokens.append(BoolToken::of(*kind), word.isAfterAColon);
        } else if (!word.isAfterAColon) {
            tokens.appendSplittingOnParens(word);
        }
    }
    return std::move(tokens.list);
}

BooleanParser::BooleanParser(std::vector<BoolToken> tokens) : tokens(std::move(tokens)) {}

BooleanExpr BooleanParser::parse(std::vector<BoolToken> tokens, Reading* reading) {
    BooleanParser parser(std::move(tokens));
    BooleanExpr expr = parser.parseExpr(0);
    if (reading) {
        const auto unread = parser.tokens.begin() + static_cast<std::ptrdiff_t>(parser.position);
        const auto unreadOperands = std::count_if(unread, parser.tokens.end(), [](const BoolToken& token) {
            return token.kind == Kind::word || token.kind == Kind::command;
        });
        *reading = Reading{parser.deepest, static_cast<size_t>(unreadOperands)};
    }
    return expr;
}

BooleanExpr BooleanParser::parseExpr(int minPrecedence) {
    // Operands joined one after the other by the same operator are gathered and
    // joined as a balanced tree, so that a list of thousands of words nests only
    // as deep as the logarithm of its length.
    std::vector<BooleanExpr> run{parsePrefix()};
    bool runIsOr = false;
    while (!atEnd()) {
        const Kind next = tokens[position].kind;
        if (next == Kind::rparen) break;
        const Join join = joinFor(next);
        if (join.precedence < minPrecedence) break;
        if (join.consumed) ++position;
        BooleanExpr right = parseExpr(join.precedence + 1);
        if (right.isEmpty()) continue;
        if (run.size() > 1 && join.isOr != runIsOr) run = {joinedBalanced(run, runIsOr)};
        runIsOr = join.isOr;
        run.push_back(std::move(right));
    }
    return joinedBalanced(run, runIsOr);
}

BooleanExpr BooleanParser::parsePrefix() {
    for (;;) {
        while (!atEnd() && (tokens[position].kind == Kind::andOp || tokens[position].kind == Kind::colonAnd ||
                            tokens[position].kind == Kind::orOp)) {
            ++position;
        }
        if (atEnd()) return {};
        const BoolToken& token = tokens[position];
        const bool nests = token.kind == Kind::notOp || token.kind == Kind::lparen;
        if (nests && depth >= maximumNesting) {
            ++position;
            continue;
        }
        switch (token.kind) {
            case Kind::word:
                ++position;
                return BooleanExpr::word(*token.word);
            case Kind::command:
                ++position;
                return BooleanExpr::command(token.command);
            case Kind::notOp:
                return parseNot();
            case Kind::lparen:
                return parseParenthesised();
            default:
                return {};
        }
    }
}

BooleanExpr BooleanParser::parseNot() {
    ++position;
    deepest = std::max(deepest, ++depth);
    BooleanExpr operand = parseExpr(3);
    --depth;
    return operand.isEmpty() ? operand : BooleanExpr::makeNot(std::move(operand));
}

BooleanExpr BooleanParser::parseParenthesised() {
    ++position;
    deepest = std::max(deepest, ++depth);
    BooleanExpr inner = parseExpr(0);
    --depth;
    if (!atEnd() && tokens[position].kind == Kind::rparen) ++position;
    return inner;
}

}  // namespace quester
