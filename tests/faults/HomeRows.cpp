#include "tests/faults/FaultRow.h"
#include "tests/faults/Phone.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace faults {
namespace {

constexpr int caller = 1; ///< Somebody who has calls.
constexpr int numbersInTheAddressBook = 2;

class HomeRow : public FaultRow {
public:
    HomeRow(Laboratory &laboratory, const QString &title, VLApiServer deployment, const QString &failingPath)
        : m_phone(laboratory, caller, deployment)
    {
        name = title;
        host = deployment.rawValue();
        path = failingPath;
    }

    void act() override { m_rowsBefore = rows(); }
    [[nodiscard]] QString complaint() const override
    {
        if (m_phone.home().isActivityIndicatorAnimating())
            return u"the ring turns on"_s;
        return rows() == m_rowsBefore ? QString() : u"%1 rows instead of %2"_s.arg(rows()).arg(m_rowsBefore);
    }

protected:
    [[nodiscard]] bool isAtRest() const override
    {
        return m_phone.isQuiet() && !m_phone.home().isActivityIndicatorAnimating();
    }
    [[nodiscard]] int rows() const { return m_phone.home().tableView()->rowCount(); }
    [[nodiscard]] bool hasLoaded() const { return rows() > numbersInTheAddressBook && isAtRest(); }

    mutable Phone m_phone;

private:
    int m_rowsBefore = 0;
};

class TokenRow final : public HomeRow {
public:
    explicit TokenRow(Laboratory &laboratory)
        : HomeRow(laboratory, u"token"_s, VLApiServer::staging, u"/api/externalservertp/get-token"_s)
    {
    }
    void prepare() override {}
    void act() override
    {
        HomeRow::act();
        m_phone.setUp();
    }
    [[nodiscard]] bool cameThrough() const override { return m_phone.isSignedIn() && hasLoaded(); }
};

class ContactsRow final : public HomeRow {
public:
    explicit ContactsRow(Laboratory &laboratory)
        : HomeRow(laboratory, u"contacts"_s, VLApiServer::preStage, u"/api/contacts/all"_s)
    {
    }
    void prepare() override
    {
        m_phone.setUp();
        when([this] { return hasLoaded(); }, [] {});
    }
    void prepareAgain() override
    {
        m_phone.home().recentsButtonTapped();
        when([this] { return hasLoaded(); }, [] {});
    }
    void act() override
    {
        HomeRow::act();
        m_phone.home().contactsButtonTapped();
    }
    [[nodiscard]] bool cameThrough() const override { return rows() == numbersInTheAddressBook && isAtRest(); }
};

class RecentsRow final : public HomeRow {
public:
    explicit RecentsRow(Laboratory &laboratory)
        : HomeRow(laboratory, u"recents"_s, VLApiServer::preStage, u"/api/calls"_s)
    {
    }
    void prepare() override
    {
        m_phone.setUp();
        when([this] { return hasLoaded(); }, [this] { prepareAgain(); });
    }
    void prepareAgain() override
    {
        m_phone.home().contactsButtonTapped();
        when([this] { return rows() == numbersInTheAddressBook; }, [] {});
    }
    void act() override
    {
        HomeRow::act();
        m_phone.home().recentsButtonTapped();
    }
    [[nodiscard]] bool cameThrough() const override { return hasLoaded(); }
};

} // namespace

void addHomeRows(FaultRows &rows, Laboratory &laboratory)
{
    rows.push_back(std::make_unique<TokenRow>(laboratory));
    rows.push_back(std::make_unique<ContactsRow>(laboratory));
    rows.push_back(std::make_unique<RecentsRow>(laboratory));
}

} // namespace faults
