#pragma once

#include <QString>

namespace vynlex {

/// The "userId" that a JSON web token names, or nothing. The signature is not checked: who issued the token is known
/// from where it came.
///
/// Ends the process when the payload is text but no JSON: deliberate, since no backend of ours issues such a token. A
/// payload of a length that no base64 text has leaves an empty line on the console.
QString userIdOfJwt(const QString &jwt);

} // namespace vynlex
