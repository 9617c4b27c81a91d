#pragma once

#include <QByteArray>

#include <functional>

#include "platform/dispatch/Lifetime.h"

namespace host {

/// A device's way to the process that started it: requests come in lines on standard input, answers go to standard
/// output. What the kit writes there goes to standard error instead, from the link's making on.
///
/// The end of the input is the end of the parent, however it came: the application quits, and should its main thread
/// hang, the process ends all the same. One per process, on the main thread.
class ParentLink {
public:
    /// `answer` gets each request, on the main queue, and returns the line to answer.
    explicit ParentLink(std::function<QByteArray(const QByteArray &request)> answer);
    ParentLink(const ParentLink &) = delete;
    ParentLink &operator=(const ParentLink &) = delete;

private:
    vynlex::Lifetime m_lifetime;
};

} // namespace host
