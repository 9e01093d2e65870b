#pragma once

#include <optional>

#include "query/CommandBase.h"

namespace quester {

// Lists one remembered folder as the whole search, by the name it was
// remembered under. It has no wording of its own: the name is the sentence.
// Its folder source is part of the known-directories subsystem, which wires it in.
class KnownDirectoriesCommand final : public CommandBase<KnownDirectoriesCommand> {
public:
    // "remembered" or "rememberedShallow"; args[0] is the folder's path.
    static CommandPtr create(std::string_view commandName, const VariableArguments& args, const TemplateFlags& flags);

    KnownDirectoriesCommand(std::optional<std::string> directory, bool shallow)
        : directory(std::move(directory)), shallow(shallow) {}

    std::string commandToString() const override { return {}; }
    std::string commandExample() const override { return {}; }
    CommandApplyResult commandImpApply(SearchResult&, SearchDataSourceDelegate*, const QueryContainer&) override {
        return CommandApplyResult::accept;
    }
    void commandImpQuerySearchArguments(QuerySearchArguments& to) const override;
    bool commandStopsWordBasedSearches() const override { return true; }
    bool sameParameters(const KnownDirectoriesCommand&) const { return true; }

    std::optional<std::string> directory;
    bool shallow = false;
};

}  // namespace quester
