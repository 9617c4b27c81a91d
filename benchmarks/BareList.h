#pragma once

#include <QAbstractListModel>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>

/// What the kit's lists are held against: Qt Quick's list view with as many rows, each of them one text, in a window of
/// 390 x 844 points.
class BareList {
    class Rows : public QAbstractListModel {
    public:
        [[nodiscard]] int rowCount(const QModelIndex & = {}) const override { return m_count; }
        [[nodiscard]] QVariant data(const QModelIndex &index, int) const override
        {
            return QStringLiteral("Row %1").arg(index.row());
        }
        [[nodiscard]] QHash<int, QByteArray> roleNames() const override { return {{Qt::UserRole, "line"}}; }
        void reset(int count)
        {
            beginResetModel();
            m_count = count;
            endResetModel();
        }

    private:
        int m_count = 0;
    };

    QQmlEngine m_engine;
    Rows m_rows;

public:
    enum class From { First, Last };

    BareList()
    {
        QQmlComponent component(&m_engine);
        component.setData("import QtQuick\n"
                          "ListView {\n"
                          "    reuseItems: true\n"
                          "    delegate: Text { required property string line; height: 80; text: line }\n"
                          "}\n",
                          {});
        list.reset(qobject_cast<QQuickItem *>(component.create()));
        if (!list)
            qFatal("%s", qPrintable(component.errorString()));
        list->setParentItem(window.contentItem());
        list->setSize({390, 844});
        list->setProperty("model", QVariant::fromValue<QObject *>(&m_rows));
        window.resize(390, 844);
        window.show();
    }

    /// Shows so many rows in place of those before, and draws them.
    void show(int rows, From from)
    {
        m_rows.reset(rows);
        if (from == From::Last)
            QMetaObject::invokeMethod(list.get(), "positionViewAtEnd");
        static_cast<void>(window.grabWindow());
    }

    QQuickWindow window;
    std::unique_ptr<QQuickItem> list;
};
