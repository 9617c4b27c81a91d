#pragma once

#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace vynlex {

class ViewController;

/// A named table of scenes, each with an identifier. The folder that has the screens makes the table.
class Storyboard {
public:
    using Scenes = std::map<QString, std::function<std::shared_ptr<ViewController>()>>;

    Storyboard(QString name, Scenes scenes);

    /// A new controller. An identifier that the storyboard lacks is a programming error and ends the process.
    [[nodiscard]] std::shared_ptr<ViewController> instantiateViewController(const QString &identifier) const;

private:
    QString m_name;
    Scenes m_scenes;
};

} // namespace vynlex
