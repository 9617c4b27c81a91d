#include "Person.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace host {

const std::array<Person, 2> &people()
{
    static const std::array<Person, 2> people{
        Person{u"asha"_s, {u"65b20a005eed000000000001"_s, u"Asha Patel"_s, {}, u"+919000001001"_s}},
        Person{u"rohan"_s, {u"65b20a005eed000000000002"_s, u"Rohan Mehta"_s, {}, u"+919000001002"_s}},
    };
    return people;
}

const Person &newcomer()
{
    static const Person newcomer{u"meera"_s, {u"65b20a005eed000000000003"_s, u"Meera Iyer"_s, {}, u"9000001003"_s}};
    return newcomer;
}

std::optional<Person> personNamed(const QString &word)
{
    const auto found = std::ranges::find(people(), word, &Person::word);
    return found == people().end() ? std::nullopt : std::optional(*found);
}

const Person &otherThan(const Person &person)
{
    return people()[person.word == people()[0].word ? 1 : 0];
}

} // namespace host
