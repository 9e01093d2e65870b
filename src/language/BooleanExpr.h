#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "language/BooleanWord.h"

namespace quester {

// A query sentence as a boolean expression: search words to find in a name, and
// references by index to the query's commands, joined by and, or and not. An
// immutable value: copies share their nodes, and evaluation may run on several
// threads at once.
class BooleanExpr {
public:
    enum class Kind { word, command, andExpr, orExpr, notExpr, empty };
    using EvalContext = BooleanEvalContext;

    BooleanExpr();  // empty

    static BooleanExpr word(BooleanWord word);
    static BooleanExpr command(int index);
    static BooleanExpr makeAnd(BooleanExpr left, BooleanExpr right);
    static BooleanExpr makeOr(BooleanExpr left, BooleanExpr right);
    static BooleanExpr makeNot(BooleanExpr operand);

    Kind kind() const;
    bool isEmpty() const { return kind() == Kind::empty; }
    // Payloads; each is valid only for its kind.
    const BooleanWord& wordValue() const;
    int commandIndex() const;
    const BooleanExpr& left() const;  // also the operand of not
    const BooleanExpr& right() const;

    // The empty expression matches everything; a command leaf asks the context.
    bool matches(std::string_view name, const EvalContext& ctx) const;
    // Words joined by and become one word of the texts joined by a blank, so that
    // an exact-name query "annual report" matches the name "annual report".
    BooleanExpr collapsedForExact() const;
    std::set<int> commandLeafIndices() const;
    // Whether a NOT stands anywhere in the tree.
    bool hasNegation() const;
    // Whether a command's verdict doesn't simply join the others by AND: a
    // command under an OR, or under a NOT. Such commands are judged through the
    // tree, and never narrow what the sources look for.
    bool hasCommandUnderOr() const;
    bool hasCommandLeafUnderOr(const std::set<int>& in) const;
    // Whether an item that no source leaf found could still match, so that the
    // general sources must run as well.
    bool needsOpenUniverse(const std::set<int>& dataSourceLeaves) const;

    // A compact form for logs and tests: and(word(a), or(cmd(0), not(word(b)))).
    std::string debugDescription() const;

    bool operator==(const BooleanExpr& other) const;

private:
    struct Node;
    explicit BooleanExpr(std::shared_ptr<const Node> node);
    static BooleanExpr joined(Kind kind, BooleanExpr left, BooleanExpr right);
    bool hasLeafUnderOr(const std::set<int>* in) const;
    bool hasCommandLeaf(const std::set<int>* in) const;

    std::shared_ptr<const Node> node;
};

}  // namespace quester
