#include "support/NotificationCenter.h"

#include <map>
#include <vector>

#include "support/Locked.h"

namespace quester {

struct NotificationCenter::State {
    struct Observer {
        std::string name;
        std::shared_ptr<Handler> handler;
    };
    struct Registry {
        // Tokens grow, so map order is the order of adding.
        std::map<Token, Observer> observers;
        Token nextToken = 1;
    };
    Locked<Registry> registry;

    std::vector<Token> observersOf(const std::string& name) const {
        return registry.access([&](const Registry& current) {
            std::vector<Token> tokens;
            for (const auto& [token, observer] : current.observers)
                if (observer.name == name) tokens.push_back(token);
            return tokens;
        });
    }

    std::shared_ptr<Handler> handlerIfStillObserving(Token token) const {
        return registry.access([&](const Registry& current) {
            auto found = current.observers.find(token);
            return found == current.observers.end() ? nullptr : found->second.handler;
        });
    }

    // Runs on the loop. No lock is held while a handler runs, so handlers may
    // add or remove observers.
    void deliver(const std::string& name) const {
        for (Token token : observersOf(name)) {
            if (auto handler = handlerIfStillObserving(token)) (*handler)();
        }
    }
};

NotificationCenter::NotificationCenter(MainLoop& loop) : loop(loop), state(std::make_shared<State>()) {}

NotificationCenter& NotificationCenter::shared() {
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const std::string& name, Handler handler) {
    auto shared = std::make_shared<Handler>(std::move(handler));
    return state->registry.access([&](State::Registry& current) {
        Token token = current.nextToken++;
        current.observers.emplace(token, State::Observer{name, std::move(shared)});
        return token;
    });
}

void NotificationCenter::removeObserver(Token token) {
    state->registry.access([&](State::Registry& current) { current.observers.erase(token); });
}

void NotificationCenter::post(const std::string& name) {
    // Nothing is posted for a name nobody observes, so a command line that
    // never runs the loop doesn't pile up posts. The task keeps the state
    // alive, so a center that goes away before the loop runs leaves nothing
    // dangling.
    if (state->observersOf(name).empty()) return;
    loop.post([state = state, name] { state->deliver(name); });
}

}  // namespace quester
