#pragma once

#include <QString>

#include <vector>

namespace vynlex {

/// Where the speech service lives. A region whose name starts with `regionPrefix` (in any case) has hosts that end in
/// `suffix`; the first rule that fits counts, so the one with the empty prefix comes last.
struct SpeechHostRule {
    QString regionPrefix;
    QString suffix;
};
using SpeechHostTable = std::vector<SpeechHostRule>;

/// The host names of the cloud services: the one table of them.
struct CloudHosts {
    SpeechHostTable speech;
    QString translator;
};

/// The public speech cloud and the two national ones; one translator for all.
const CloudHosts &publicCloudHosts();

} // namespace vynlex
