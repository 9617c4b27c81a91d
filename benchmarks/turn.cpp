// The kit's own share of a turn: from the final phrase handed over by the speech service to the other label painted,
// with services that answer at once. The screen is the real one, drawn by the software renderer at 390 x 844 points.

#include <vector>

#include "benchmarks/Figures.h"
#include "benchmarks/SoftwareScreen.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/views/ConversationStage.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int turns = 300;

} // namespace

int main(int argc, char **argv)
{
    const SoftwareScreen screen(argc, argv);
    const Figures figures(argc, argv);
    ConversationStage stage(deviceShapes().front());

    std::vector<double> turnMs;
    std::vector<double> drawingMs;
    {
        const CapturedConsole console; // what the kit prints would be drawn by nobody
        for (int turn = 0; turn < turns; ++turn) {
            const int before = stage.platform.network->requestCount();
            if (!stage.listen(Side::Speaker) ||
                !eventually([&] { return stage.platform.speechService->lastRecognition().isStarted(); }))
                return EXIT_FAILURE;
            turnMs.push_back(milliseconds([&] {
                stage.platform.speechService->lastRecognition().deliverRecognized(u"Where is the railway station?"_s);
                while (stage.platform.network->requestCount() == before)
                    QCoreApplication::processEvents();
                stage.translate(u"रेलवे स्टेशन %1 कहाँ है?"_s.arg(turn));
                static_cast<void>(stage.window.grabWindow());
            }));
            drawingMs.push_back(milliseconds([&] { static_cast<void>(stage.window.grabWindow()); }));
        }
    }
    figures.print("turn, painting included", turnMs);
    figures.print("drawing the same picture", drawingMs);
    return EXIT_SUCCESS;
}
