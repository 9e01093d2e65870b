#include "language/BooleanExpr.h"

#include <optional>

namespace quester {

struct BooleanExpr::Node {
    Kind kind = Kind::empty;
    std::optional<BooleanWord> word;
    int command = 0;
    BooleanExpr left;
    BooleanExpr right;
};

namespace {

const BooleanExpr& emptyExpr() {
    static const BooleanExpr empty;
    return empty;
}

}  // namespace

BooleanExpr::BooleanExpr() = default;

BooleanExpr::BooleanExpr(std::shared_ptr<const Node> node) : node(std::move(node)) {}

BooleanExpr BooleanExpr::word(BooleanWord word) {
    auto made = std::make_shared<Node>();
    made->kind = Kind::word;
    made->word = std::move(word);
    return BooleanExpr(std::move(made));
}

BooleanExpr BooleanExpr::command(int index) {
    auto made = std::make_shared<Node>();
    made->kind = Kind::command;
    made->command = index;
    return BooleanExpr(std::move(made));
}

BooleanExpr BooleanExpr::joined(Kind kind, BooleanExpr left, BooleanExpr right) {
    auto made = std::make_shared<Node>();
    made->kind = kind;
    made->left = std::move(left);
    made->right = std::move(right);
    return BooleanExpr(std::move(made));
}

BooleanExpr BooleanExpr::makeAnd(BooleanExpr left, BooleanExpr right) {
    return joined(Kind::andExpr, std::move(left), std::move(right));
}

BooleanExpr BooleanExpr::makeOr(BooleanExpr left, BooleanExpr right) {
    return joined(Kind::orExpr, std::move(left), std::move(right));
}

BooleanExpr BooleanExpr::makeNot(BooleanExpr operand) {
    return joined(Kind::notExpr, std::move(operand), BooleanExpr());
}

BooleanExpr::Kind BooleanExpr::kind() const {
    return node ? node->kind : Kind::empty;
}

const BooleanWord& BooleanExpr::wordValue() const {
    return *node->word;
}

int BooleanExpr::commandIndex() const {
    return node ? node->command : 0;
}

const BooleanExpr& BooleanExpr::left() const {
    return node ? node->left : emptyExpr();
}

const BooleanExpr& BooleanExpr::right() const {
    return node ? node->right : emptyExpr();
}

bool BooleanExpr::matches(std::string_view name, const EvalContext& ctx) const {
    switch (kind()) {
        case Kind::word:
            return wordValue().matches(name, ctx);
        case Kind::command:
            return ctx.evaluateCommand ? ctx.evaluateCommand(commandIndex()) : true;
        case Kind::andExpr:
            return left().matches(name, ctx) && right().matches(name, ctx);
        case Kind::orExpr:
            return left().matches(name, ctx) || right().matches(name, ctx);
        case Kind::notExpr:
            return !left().matches(name, ctx);
        case Kind::empty:
            return true;
    }
    return true;
}

BooleanExpr BooleanExpr::collapsedForExact() const {
    switch (kind()) {
        case Kind::notExpr:
            return makeNot(left().collapsedForExact());
        case Kind::orExpr:
            return makeOr(left().collapsedForExact(), right().collapsedForExact());
        case Kind::andExpr: {
            BooleanExpr a = left().collapsedForExact();
            BooleanExpr b = right().collapsedForExact();
            if (a.kind() != Kind::word || b.kind() != Kind::word) return makeAnd(std::move(a), std::move(b));
            BooleanWord joined(a.wordValue().textOriginalCase + " " + b.wordValue().textOriginalCase,
                               SentenceComponent::Wildcard::none);
            joined.textLowered = a.wordValue().textLowered + " " + b.wordValue().textLowered;
            return word(std::move(joined));
        }
        default:
            return *this;
    }
}

std::set<int> BooleanExpr::commandLeafIndices() const {
    std::set<int> indices;
    switch (kind()) {
        case Kind::command:
            indices.insert(commandIndex());
            break;
        case Kind::andExpr:
        case Kind::orExpr:
            indices = left().commandLeafIndices();
            indices.merge(right().commandLeafIndices());
            break;
        case Kind::notExpr:
            indices = left().commandLeafIndices();
            break;
        default:
            break;
    }
    return indices;
}

bool BooleanExpr::hasNegation() const {
    switch (kind()) {
        case Kind::andExpr:
        case Kind::orExpr:
            return left().hasNegation() || right().hasNegation();
        case Kind::notExpr:
            return true;
        default:
            return false;
    }
}

bool BooleanExpr::hasCommandLeaf(const std::set<int>* in) const {
    switch (kind()) {
        case Kind::command:
            return in == nullptr || in->contains(commandIndex());
        case Kind::andExpr:
        case Kind::orExpr:
            return left().hasCommandLeaf(in) || right().hasCommandLeaf(in);
        case Kind::notExpr:
            return left().hasCommandLeaf(in);
        default:
            return false;
    }
}

bool BooleanExpr::hasLeafUnderOr(const std::set<int>* in) const {
    switch (kind()) {
        case Kind::orExpr:
            return left().hasCommandLeaf(in) || right().hasCommandLeaf(in) || left().hasLeafUnderOr(in) ||
                   right().hasLeafUnderOr(in);
        case Kind::andExpr:
            return left().hasLeafUnderOr(in) || right().hasLeafUnderOr(in);
        case Kind::notExpr:
            // A negated command can't be applied flat either: its verdict must
            // be turned round, so it counts as if it stood under an OR.
            return left().hasCommandLeaf(in) || left().hasLeafUnderOr(in);
        default:
            return false;
    }
}

bool BooleanExpr::hasCommandUnderOr() const {
    return hasLeafUnderOr(nullptr);
}

bool BooleanExpr::hasCommandLeafUnderOr(const std::set<int>& in) const {
    return hasLeafUnderOr(&in);
}

bool BooleanExpr::needsOpenUniverse(const std::set<int>& dataSourceLeaves) const {
    switch (kind()) {
        case Kind::word:
            return true;
        case Kind::command:
            return !dataSourceLeaves.contains(commandIndex());
        case Kind::andExpr:
        case Kind::orExpr:
            return left().needsOpenUniverse(dataSourceLeaves) || right().needsOpenUniverse(dataSourceLeaves);
        case Kind::notExpr:
            return true;
        case Kind::empty:
            return false;
    }
    return false;
}

std::string BooleanExpr::debugDescription() const {
    switch (kind()) {
        case Kind::word:
            return "word(" + wordValue().textOriginalCase + ")";
        case Kind::command:
            return "cmd(" + std::to_string(commandIndex()) + ")";
        case Kind::andExpr:
            return "and(" + left().debugDescription() + ", " + right().debugDescription() + ")";
        case Kind::orExpr:
            return "or(" + left().debugDescription() + ", " + right().debugDescription() + ")";
        case Kind::notExpr:
            return "not(" + left().debugDescription() + ")";
        case Kind::empty:
            return "empty";
    }
    return "empty";
}

bool BooleanExpr::operator==(const BooleanExpr& other) const {
    if (kind() != other.kind()) return false;
    switch (kind()) {
        case Kind::word:
            return wordValue() == other.wordValue();
        case Kind::command:
            return commandIndex() == other.commandIndex();
        case Kind::andExpr:
        case Kind::orExpr:
            return left() == other.left() && right() == other.right();
        case Kind::notExpr:
            return left() == other.left();
        case Kind::empty:
            return true;
    }
    return true;
}

}  // namespace quester
