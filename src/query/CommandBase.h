#pragma once

#include <any>
#include <memory>
#include <string>

#include "language/VariableParserResult.h"
#include "query/Command.h"

namespace quester {

// The parts every concrete command writes the same way: `copy` through the
// class's copy constructor (which gives a new id and no consumed parts, see
// Command), and `isReplaceableWith` as "same class, and `sameParameters`".
// `Derived` declares `bool sameParameters(const Derived&) const`.
template <typename Derived>
class CommandBase : public Command {
public:
    CommandPtr copy() const override { return std::make_shared<Derived>(static_cast<const Derived&>(*this)); }

    bool isReplaceableWith(const Command& otherCmd) const override {
        const auto* other = dynamic_cast<const Derived*>(&otherCmd);
        return other != nullptr && static_cast<const Derived*>(this)->sameParameters(*other);
    }

protected:
    CommandBase() = default;
    CommandBase(const CommandBase& other) : Command(other) {}
};

// The argument at `index` when it holds a `T`; null otherwise.
template <typename T>
const T* argumentAt(const VariableArguments& args, size_t index) {
    return index < args.size() ? std::any_cast<T>(&args[index]) : nullptr;
}

// A blank-free word stays as it is; anything else goes in double quotes, so that
// the tokeniser reads it back as one word.
std::string quotedIfNeeded(const std::string& word);

// `word` between double quotes, or between "**" marks inside them for an example.
std::string quotedText(const std::string& word, bool example);

}  // namespace quester
