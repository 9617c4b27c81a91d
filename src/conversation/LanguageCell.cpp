#include "conversation/LanguageCell.h"

#include "platform/ui/ResourceBundle.h"

using namespace Qt::StringLiterals;

namespace vynlex {

QUrl LanguageCell::RadioButton::currentImage() const
{
    return ResourceBundle::image(selected ? u"radioButton_Selected"_s : u"radioButton_Unselected"_s);
}

std::vector<LanguageTable::Role> languageTableRoles()
{
    return {
        {"optionLabel", [](const LanguageCell &cell) { return cell.optionLabel; }},
        {"radioSelected", [](const LanguageCell &cell) { return cell.radioButton.selected; }},
        {"radioImage", [](const LanguageCell &cell) { return cell.radioButton.currentImage(); }},
        {"seperatorHidden", [](const LanguageCell &cell) { return cell.seperatorViewHidden; }},
    };
}

} // namespace vynlex
