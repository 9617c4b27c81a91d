#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

#include <QUuid>

#include <memory>

namespace vynlex {

class NetworkReachabilityHandlerDelegate;

/// Tells its delegates whether the device can reach the network, whenever that may have changed: connected by Wi-Fi, by
/// cable or by the cellular network, or not connected.
///
/// Main thread. Delegates are told on later turns of the main queue, in the order of their identifiers; the first time
/// soon after the notifier has started, with the state that holds then. A delegate that is added later hears of the
/// next change only. The same answer may come twice in a row (Wi-Fi to cellular, say).
class VYNLEX_EXPORT NetworkReachabilityHandler {
public:
    /// Idle, with no delegates; `startNotifier` begins.
    NetworkReachabilityHandler();
    ~NetworkReachabilityHandler();
    NetworkReachabilityHandler(const NetworkReachabilityHandler &) = delete;
    NetworkReachabilityHandler &operator=(const NetworkReachabilityHandler &) = delete;

    /// The one that the kit uses: made and started on first use, never destroyed.
    static NetworkReachabilityHandler &instance();

    /// Keeps a reference to `delegate`, which it does not own: `removeDelegate` comes before the delegate's end.
    /// Replaces the delegate that is there under the same identifier.
    void addDelegates(NetworkReachabilityHandlerDelegate &delegate, const QUuid &identifier);

    /// The delegate is not called any more once this has returned. Nothing happens if there is none.
    void removeDelegate(const QUuid &identifier);

    /// Does nothing once it is started. Returns at once: the device is asked in the background. A device that cannot
    /// tell is no error; the delegates then hear nothing.
    void startNotifier();

private:
    struct Core;
    std::shared_ptr<Core> m_core;
};

} // namespace vynlex
