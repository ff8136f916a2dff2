// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixloginwidget.h"

#include "ipc/nubixmessagehandler.h"

#include <htk/label.h>
#include <htk/themehelper.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace hfmplugin_nubix {

namespace {
constexpr int kProductIconSize = 96;
constexpr int kTileIconSize = 60;
// Three tiles fit a narrow window; longer texts wrap inside.
constexpr int kTileWidth = 200;

// The application font's pixel size, also when the font was set in points.
int appFontPixelSize()
{
    const QFont font = QApplication::font();
    if (font.pixelSize() > 0)
        return font.pixelSize();
    return QFontInfo(font).pixelSize();
}

QPixmap themePixmap(const QString &name, const QString &fallback, int size)
{
    const QIcon icon = fallback.isEmpty() ? QIcon::fromTheme(name) : QIcon::fromTheme(name, QIcon::fromTheme(fallback));
    return icon.pixmap(QSize(size, size));
}

// A feature tile's title: the strong text colour of the current theme.
void applyTitleColor(QLabel *title)
{
    QPalette palette = title->palette();
    const bool dark = htk::ThemeHelper::instance()->themeType() == htk::ThemeHelper::DarkType;
    palette.setColor(QPalette::WindowText, dark ? QColor(0xe3, 0xe7, 0xef) : QColor(0x1f, 0x2a, 0x3d));
    title->setPalette(palette);
}
}   // namespace

NubixLoginWidget::NubixLoginWidget(const QUrl &url, QWidget *parent) : QWidget(parent), root(url)
{
    setupUI();
}

NubixLoginWidget::~NubixLoginWidget() = default;

QWidget *NubixLoginWidget::widget() const
{
    return const_cast<NubixLoginWidget *>(this);
}

QUrl NubixLoginWidget::rootUrl() const
{
    return root;
}

bool NubixLoginWidget::setRootUrl(const QUrl &url)
{
    root = url;
    return true;
}

void NubixLoginWidget::openNubix()
{
    NubixMessageHandler::launchApp();
    NubixMessageHandler::instance()->tryConnect();
}

void NubixLoginWidget::setupUI()
{
    setObjectName(QStringLiteral("NubixLoginWidget"));
    auto *layout = new QVBoxLayout(this);
    layout->addStretch(7000);

    auto *productIcon = new QLabel(this);
    productIcon->setObjectName(QStringLiteral("productIcon"));
    productIcon->setFixedSize(kProductIconSize, kProductIconSize);
    productIcon->setPixmap(themePixmap(QStringLiteral("fbnubix_app"), QStringLiteral("kelo-drive"), kProductIconSize));
    layout->addWidget(productIcon, 0, Qt::AlignHCenter);
    layout->addSpacing(10);

    auto *productName = new QLabel(tr("Kelo Drive"), this);
    productName->setObjectName(QStringLiteral("productName"));
    QFont nameFont = productName->font();
    nameFont.setPixelSize(appFontPixelSize() + 6);
    nameFont.setWeight(75);
    productName->setFont(nameFont);
    productName->setAlignment(Qt::AlignCenter);
    layout->addWidget(productName, 0, Qt::AlignHCenter);
    layout->addSpacing(40);

    auto *features = new QHBoxLayout;
    features->setSpacing(40);
    features->addStretch(10000);
    auto addSplitter = [this, features] {
        auto *splitter = new QLabel(this);
        splitter->setObjectName(QStringLiteral("splitter"));
        splitter->setFixedSize(1, 30);
        splitter->setPixmap(QIcon::fromTheme(QStringLiteral("fbnubix_splitter")).pixmap(QSize(1, 30)));
        features->addWidget(splitter, 0, Qt::AlignCenter);
    };
    features->addWidget(createFunctionWidget(QStringLiteral("fbnubix_syncing"), tr("Automatic Synchronization"),
                            tr("Automatic detection of cloud updates\nBi-directional local cloud synchronization")),
        0, Qt::AlignCenter);
    addSplitter();
    features->addWidget(createFunctionWidget(QStringLiteral("fbnubix_cooperation"), tr("Cross-platform Collaboration"),
                            tr("Kelo ID Unified Login\nMulti-Device Collaboration")),
        0, Qt::AlignCenter);
    addSplitter();
    features->addWidget(createFunctionWidget(QStringLiteral("fbnubix_backup"), tr("Secure Backup"),
                            tr("Easy to retrieve accidentally deleted documents\nAlways protect the security of "
                               "documents")),
        0, Qt::AlignCenter);
    features->addStretch(10000);
    layout->addLayout(features);
    layout->addSpacing(80);

    auto *openButton = new QPushButton(tr("Open Kelo Drive"), this);
    openButton->setObjectName(QStringLiteral("openButton"));
    openButton->setMinimumWidth(200);
    connect(openButton, &QPushButton::clicked, this, &NubixLoginWidget::openNubix);
    layout->addWidget(openButton, 0, Qt::AlignHCenter);
    // Below the button the page keeps a little more room than above the
    // icon, which sets the block slightly above the middle.
    layout->addStretch(10000);
}

QWidget *NubixLoginWidget::createFunctionWidget(const QString &icon, const QString &title, const QString &description)
{
    auto *tile = new QWidget(this);
    tile->setObjectName(QStringLiteral("functionWidget"));
    tile->setFixedWidth(kTileWidth);
    auto *layout = new QVBoxLayout(tile);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);

    auto *iconLabel = new QLabel(tile);
    iconLabel->setObjectName(QStringLiteral("functionIcon"));
    iconLabel->setFixedSize(kTileIconSize, kTileIconSize);
    iconLabel->setPixmap(QIcon::fromTheme(icon).pixmap(QSize(kTileIconSize, kTileIconSize)));
    layout->addWidget(iconLabel, 0, Qt::AlignHCenter);

    auto *titleLabel = new htk::Label(title, tile);
    titleLabel->setObjectName(QStringLiteral("functionTitle"));
    QFont titleFont = titleLabel->font();
    titleFont.setPixelSize(appFontPixelSize() - 2);
    titleLabel->setFont(titleFont);
    titleLabel->setWordWrap(true);
    titleLabel->setAlignment(Qt::AlignCenter);
    // Full width (centred text) so that wrapped lines get their height.
    layout->addWidget(titleLabel);

    auto *descriptionLabel = new htk::TipLabel(description, tile);
    descriptionLabel->setObjectName(QStringLiteral("functionDescription"));
    QFont tipFont = descriptionLabel->font();
    tipFont.setPixelSize(appFontPixelSize() - 2);
    descriptionLabel->setFont(tipFont);
    descriptionLabel->setWordWrap(true);
    descriptionLabel->setAlignment(Qt::AlignCenter);
    layout->addWidget(descriptionLabel);

    // Icons and the title's colour follow the desktop's light or dark theme.
    auto refresh = [iconLabel, titleLabel, icon] {
        iconLabel->setPixmap(QIcon::fromTheme(icon).pixmap(QSize(kTileIconSize, kTileIconSize)));
        applyTitleColor(titleLabel);
    };
    refresh();
    connect(htk::ThemeHelper::instance(), &htk::ThemeHelper::themeTypeChanged, tile, refresh);
    return tile;
}

}   // namespace hfmplugin_nubix
