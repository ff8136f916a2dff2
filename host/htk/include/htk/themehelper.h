// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <htk/htk_global.h>

#include <QObject>

namespace htk {

// Tells whether the desktop uses a light or a dark theme, judged from the
// application palette, and signals when that changes. GUI thread only.
class HTK_EXPORT ThemeHelper : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY(ThemeHelper)
public:
    enum ThemeType { UnknownType = 0, LightType = 1, DarkType = 2 };
    Q_ENUM(ThemeType)

    static ThemeHelper *instance();

    ThemeType themeType() const;
    // Forces a theme (the host's settings or tests); emits on change.
    void setThemeType(ThemeType type);

Q_SIGNALS:
    void themeTypeChanged(htk::ThemeHelper::ThemeType type);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ThemeHelper();
    ThemeType m_type = UnknownType;
    bool m_forced = false;
};

}   // namespace htk
