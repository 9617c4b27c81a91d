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
