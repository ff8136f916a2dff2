// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/themehelper.h>

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace htk {

namespace {

ThemeHelper::ThemeType typeFromPalette()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return ThemeHelper::UnknownType;
    const QColor window = QGuiApplication::palette().color(QPalette::Window);
    return window.lightness() < 128 ? ThemeHelper::DarkType : ThemeHelper::LightType;
}

}   // namespace

ThemeHelper::ThemeHelper() : m_type(typeFromPalette())
{
    // Queued connections and spies look the signal's argument up by name.
    qRegisterMetaType<ThemeType>("htk::ThemeHelper::ThemeType");
    if (QCoreApplication *app = QCoreApplication::instance())
        app->installEventFilter(this);
}

ThemeHelper *ThemeHelper::instance()
{
    static ThemeHelper *helper = new ThemeHelper;
    return helper;
}

ThemeHelper::ThemeType ThemeHelper::themeType() const
{
    return m_type;
}

void ThemeHelper::setThemeType(ThemeType type)
{
    m_forced = type != UnknownType;
    const ThemeType next = m_forced ? type : typeFromPalette();
    if (next == m_type)
        return;
    m_type = next;
    Q_EMIT themeTypeChanged(m_type);
}

bool ThemeHelper::eventFilter(QObject *watched, QEvent *event)
{
    // The application object gets the change first; widgets get their own copy.
    if (event->type() == QEvent::ApplicationPaletteChange && watched == QCoreApplication::instance() && !m_forced) {
        const ThemeType next = typeFromPalette();
        if (next != m_type) {
            m_type = next;
            Q_EMIT themeTypeChanged(m_type);
        }
    }
    return QObject::eventFilter(watched, event);
}

}   // namespace htk
