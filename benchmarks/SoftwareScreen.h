#pragma once

#include <QGuiApplication>

/// An application whose windows are drawn by Qt Quick's software renderer and shown nowhere.
class SoftwareScreen {
    struct Settings {
        Settings()
        {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            qputenv("QT_QUICK_BACKEND", "software");
        }
    };

    Settings m_settings; // before the application reads them
    QGuiApplication m_application;

public:
    SoftwareScreen(int &argc, char **argv)
        : m_application(argc, argv)
    {
    }
};
