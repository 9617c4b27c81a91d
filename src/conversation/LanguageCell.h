#pragma once

#include <QString>
#include <QUrl>

#include <vector>

#include "language/LanguageOption.h"
#include "platform/ui/RowModel.h"

namespace vynlex {

/// One row of the language picker: a radio mark, the language's name in its own script, and a line below it.
struct LanguageCell {
    static constexpr const char *reuseIdentifier = "LanguageCell";

    struct RadioButton {
        bool selected = false;

        [[nodiscard]] QUrl currentImage() const;

        bool operator==(const RadioButton &) const = default;
    };

    RadioButton radioButton;
    QString optionLabel;
    bool seperatorViewHidden = false; ///< the spelling is the kit's own

    bool operator==(const LanguageCell &) const = default;
};

/// Roles: `optionLabel` (text), `radioSelected` (bool), `radioImage` (url), `seperatorHidden` (bool).
using LanguageTable = RowModel<LanguageCell>;

[[nodiscard]] std::vector<LanguageTable::Role> languageTableRoles();

} // namespace vynlex
