// SPDX-License-Identifier: GPL-3.0-or-later
#include <htk/label.h>

#include <htk/themehelper.h>

#include <QApplication>

namespace htk {

Label::Label(QWidget *parent) : QLabel(parent) { }

Label::Label(const QString &text, QWidget *parent) : QLabel(text, parent) { }

TipLabel::TipLabel(QWidget *parent) : TipLabel(QString(), parent) { }

TipLabel::TipLabel(const QString &text, QWidget *parent) : Label(text, parent)
{
    QFont f = font();
    if (f.pointSizeF() > 0)
        f.setPointSizeF(qMax(6.0, f.pointSizeF() * 0.85));
    else if (f.pixelSize() > 0)
        f.setPixelSize(qMax(8, f.pixelSize() * 85 / 100));
    setFont(f);
    applyTheme();
    connect(ThemeHelper::instance(), &ThemeHelper::themeTypeChanged, this, &TipLabel::applyTheme);
}

// The dimmed colour is the application's text colour, partly transparent,
// so it reads on light and dark windows alike.
void TipLabel::applyTheme()
{
    QPalette pal = palette();
    QColor text = QApplication::palette().color(QPalette::WindowText);
    text.setAlphaF(0.6);
    pal.setColor(QPalette::WindowText, text);
    setPalette(pal);
}

}   // namespace htk
