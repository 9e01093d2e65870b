#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "language/BooleanExpr.h"
#include "language/SentenceComponent.h"

namespace quester {

// One token of the boolean reading of a sentence.
struct BoolToken {
    enum class Kind { word, command, andOp, colonAnd, orOp, notOp, lparen, rparen };

    Kind kind = Kind::word;
    std::optional<BooleanWord> word;  // for Kind::word
    int command = 0;                  // for Kind::command

    static BoolToken of(Kind kind) { return BoolToken{kind, std::nullopt, 0}; }
    bool operator==(const BoolToken&) const = default;
};

// Turns the words of a sentence into a BooleanExpr: juxtaposition is AND, AND
// binds tighter than OR, OR tighter than the colon, and NOT takes one operand.
// Never fails: stray operators and parentheses are skipped or closed.
class BooleanParser {
public:
    // `commandForPart` gives the index of the boolean-capable command that took a
    // word; `isRecognised` tells a word that some other command took.
    static std::vector<BoolToken> tokenizeUnified(
        const std::vector<SentenceComponent>& words, const std::function<bool(const SentenceComponent&)>& isRecognised,
        const std::function<std::optional<int>(const SentenceComponent&)>& commandForPart);

    explicit BooleanParser(std::vector<BoolToken> tokens);

    // What a parse met beyond the expression itself.
    struct Reading {
        int deepestNesting = 0;     // parentheses and NOTs inside one another
        size_t unreadOperands = 0;  // words and commands after a ")" that closes nothing
    };

    // The whole sentence: parseExpr(0) from the first token.
    static BooleanExpr parse(std::vector<BoolToken> tokens, Reading* reading = nullptr);

    BooleanExpr parseExpr(int minPrecedence);

private:
    BooleanExpr parsePrefix();
    BooleanExpr parseNot();
    BooleanExpr parseParenthesised();
    bool atEnd() const { return position >= tokens.size(); }

    std::vector<BoolToken> tokens;
    size_t position = 0;
    int depth = 0;
    int deepest = 0;
};

}  // namespace quester
