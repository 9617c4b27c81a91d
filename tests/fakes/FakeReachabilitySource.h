#pragma once

#include <QString>

#include <map>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "platform/dispatch/Guarded.h"
#include "platform/network/ReachabilitySource.h"

namespace vynlex {

/// A network that the test brings up and down; every source made here sees the same one. Starts unreachable.
class FakeNetworkPath {
public:
    /// Changes the flags and tells the sources that are started, on another thread, before it returns. Flags that are
    /// the same as before are told as well.
    void set(ReachabilityFlags flags)
    {
        std::vector<std::shared_ptr<const ReachabilitySource::Changed>> listeners;
        m_state->with([&](State &state) {
            state.flags = flags;
            for (const auto &[source, changed] : state.started)
                listeners.push_back(changed);
        });
        std::thread([&] {
            for (const auto &changed : listeners)
                (*changed)(flags);
        }).join();
    }

    void failNextStart(ReachabilitySource::StartFailure failure)
    {
        m_state->with([&](State &state) { state.startFailure = failure; });
    }
    void failReading(bool fail)
    {
        m_state->with([&](State &state) { state.readingFails = fail; });
    }

    [[nodiscard]] int startedCount() const
    {
        return m_state->with([](State &state) { return static_cast<int>(state.started.size()); });
    }

    [[nodiscard]] std::unique_ptr<ReachabilitySource> makeSource() const { return std::make_unique<Source>(m_state); }

private:
    struct State {
        ReachabilityFlags flags = 0;
        std::map<const void *, std::shared_ptr<const ReachabilitySource::Changed>> started;
        std::optional<ReachabilitySource::StartFailure> startFailure;
        bool readingFails = false;
    };

    class Source final : public ReachabilitySource {
    public:
        explicit Source(std::shared_ptr<Guarded<State>> state)
            : m_state(std::move(state))
        {
        }
        ~Source() override { Source::stop(); }

        tl::expected<void, StartFailure> start(Changed changed) override
        {
            return m_state->with([&](State &state) -> tl::expected<void, StartFailure> {
                if (const auto failure = std::exchange(state.startFailure, std::nullopt))
                    return tl::unexpected(*failure);
                if (!state.started.emplace(this, std::make_shared<const Changed>(std::move(changed))).second)
                    qFatal("FakeNetworkPath: a source is started once until it is stopped.");
                return {};
            });
        }

        void stop() override
        {
            const auto dropped = m_state->with([this](State &state) { return state.started.extract(this); });
        }

        tl::expected<ReachabilityFlags, QString> currentFlags() override
        {
            return m_state->with([](State &state) -> tl::expected<ReachabilityFlags, QString> {
                if (state.readingFails)
                    return tl::unexpected(QStringLiteral("The network does not tell."));
                return state.flags;
            });
        }

    private:
        std::shared_ptr<Guarded<State>> m_state;
    };

    std::shared_ptr<Guarded<State>> m_state = std::make_shared<Guarded<State>>();
};

} // namespace vynlex
