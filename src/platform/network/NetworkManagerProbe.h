#pragma once

namespace vynlex {

/// Whether NetworkManager runs on the system bus and answers. Blocks: for some milliseconds, or for as long as a bus
/// that is broken takes (25 s and more).
///
/// Asked before QtDBus is: it makes every connection of the process on one thread, so a broken system bus would hold up
/// the application's own use of the session bus for as long.
bool networkManagerAnswers();

} // namespace vynlex
