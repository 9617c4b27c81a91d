// The home screen as it is seen, drawn by the software renderer at 390 x 844 points: the contacts tab with 10,000
// people from the backend's answer to its first picture, and the pictures of that list being scrolled; beside a bare
// list view.

#include <algorithm>
#include <vector>

#include "benchmarks/BareList.h"
#include "benchmarks/Figures.h"
#include "benchmarks/Scrolling.h"
#include "benchmarks/SoftwareScreen.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/views/HomeStage.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int people = 10'000;
constexpr int signedUp = 1000; ///< The most that one answer tells.
constexpr int times = 30;
constexpr int pictures = 1000;
constexpr double step = 40; ///< Points a picture: a quick flick.

QStringList names()
{
    const QString givenNames[] = {u"Asha"_s, u"Brian"_s, u"कमला"_s, u"Dev"_s, u"Elena"_s, u"Farid"_s, u"ગીતા"_s};
    const QString familyNames[] = {u"Rao"_s, u"Smith"_s, u"Patel"_s, u"शर्मा"_s, u"Fernandes"_s};
    QStringList all;
    for (int person = 0; person < people; ++person)
        all << givenNames[person % std::size(givenNames)] + u' ' + familyNames[person % std::size(familyNames)];
    return all;
}

QByteArray contactsAnswer()
{
    QByteArrayList contacts;
    for (int person = 0; person < signedUp; ++person) {
        const QByteArray number = QByteArray::number(person);
        contacts << R"({"id":"65f0c1d2e3a4b5c6d7)" + number +
                        R"(","name":"Asha","lname":"Patel","phoneNo":"+91 98765 )" +
                        QByteArray::number(43210 + person) + R"(","roleIds":["member"]})";
    }
    return R"({"moreAvailable":false,"total":1000,"contacts":[)" + contacts.join(',') + "]}";
}

/// From the backend's answer to the picture. Negative when the answer is not taken.
double showContacts(HomeStage &stage, const QByteArray &answer)
{
    if (!stage.showRecents(1))
        return -1;
    stage.screen->contactsButtonTapped();
    static_cast<void>(stage.window.grabWindow());
    bool isTaken = false;
    const double ms = milliseconds([&] {
        isTaken = stage.platform.network->answer(stage.platform.network->requestCount() - 1, 200, answer);
        while (isTaken && stage.screen->tableView()->rowCount() != people)
            QCoreApplication::processEvents();
        static_cast<void>(stage.window.grabWindow());
    });
    return isTaken ? ms : -1;
}

} // namespace

int main(int argc, char **argv)
{
    const SoftwareScreen screen(argc, argv);
    const Figures figures(argc, argv);
    std::vector<double> opening;
    std::vector<double> showing;
    std::vector<double> scrolling;
    std::vector<double> bareScrolling;
    {
        const CapturedConsole console; // what the kit prints would be drawn by nobody
        BareList bare;
        HomeStage stage(deviceShapes().front());
        if (!stage.showContacts(names()))
            return EXIT_FAILURE;
        const QByteArray answer = contactsAnswer();
        for (int time = 0; time < times; ++time) { // by turns, so that both see the same machine
            opening.push_back(showContacts(stage, answer));
            showing.push_back(milliseconds([&] { bare.show(people, BareList::From::First); }));
        }
        scrolling = scroll(stage.window, *listIn(*stage.window.contentItem()), step, pictures);
        bareScrolling = scroll(bare.window, *bare.list, step, pictures);
    }
    if (std::ranges::min(opening) < 0)
        return EXIT_FAILURE;
    figures.print("the contacts tab with 10000", opening);
    figures.print("a list view of 10000", showing);
    figures.print("a picture while scrolling", scrolling);
    figures.print("a picture of the list view while scrolling", bareScrolling);
    return EXIT_SUCCESS;
}
