#include "platform/net/CloudHosts.h"

using namespace Qt::StringLiterals;

namespace vynlex {

const CloudHosts &publicCloudHosts()
{
    static const CloudHosts hosts{
        .speech = {{u"china"_s, u".azure.cn"_s}, {u"usgov"_s, u".azure.us"_s}, {QString(), u".microsoft.com"_s}},
        .translator = u"api.cognitive.microsofttranslator.com"_s,
    };
    return hosts;
}

} // namespace vynlex
