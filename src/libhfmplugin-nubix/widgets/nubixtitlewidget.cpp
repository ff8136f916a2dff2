// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/nubixtitlewidget.h"

#include "caches/nubixcaches.h"
#include "ipc/nubixmessagehandler.h"
#include "nubixglobal.h"

#include <htk/iconbutton.h>

#include <QFocusEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QTextDocumentFragment>
#include <QTimer>

namespace hfmplugin_nubix {

namespace {
constexpr int kHeight = 30;
constexpr int kIconSize = 20;
constexpr int kRefreshDelayMs = 300;

const QString kLinkLaunchApp = QStringLiteral("LaunchApp");
const QString kLinkErrorList = QStringLiteral("ErrorList");
const QString kLinkSyncContinue = QStringLiteral("SyncContinue");
const QString kLinkSyncDetail = QStringLiteral("SyncDetail");

const QString kIconPause = QStringLiteral("fbnubix_drive_pause");
const QString kIconError = QStringLiteral("fbnubix_drive_error");
const QString kIconNetwork = QStringLiteral("fbnubix_network_error");
const QString kIconSyncing = QStringLiteral("fbnubix_drive_syncing");
const QString kIconDone = QStringLiteral("fbnubix_drive_done");

// Tabbing into the text lands on its first link (backwards: its last), so
// that Enter follows it at once; a text without links is no tab stop.
class LinkLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        QLabel::focusInEvent(event);
        if (event->reason() == Qt::TabFocusReason)
            focusNextPrevChild(true);
        else if (event->reason() == Qt::BacktabFocusReason)
            focusNextPrevChild(false);
    }
};
}   // namespace

NubixTitleWidget::NubixTitleWidget(QWidget *parent) : QWidget(parent)
{
    setupUI();
    connects();
}

NubixTitleWidget::~NubixTitleWidget() = default;

void NubixTitleWidget::setupUI()
{
    setObjectName(QStringLiteral("NubixTitleWidget"));
    setFixedHeight(kHeight);
    setContentsMargins(10, 0, 21, 0);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);

    iconLabel = new QLabel(this);
    iconLabel->setObjectName(QStringLiteral("iconLabel"));
    iconLabel->setContentsMargins(0, 0, 0, 0);
    iconLabel->setFixedSize(kIconSize, kIconSize);

    textLabel = new LinkLabel(this);
    textLabel->setObjectName(QStringLiteral("textLabel"));
    QFont font = textLabel->font();
    font.setPixelSize(12);
    textLabel->setFont(font);
    textLabel->setTextFormat(Qt::RichText);
    textLabel->setOpenExternalLinks(false);
    // Tab reaches the links and Enter follows the focused one, as a click does.
    textLabel->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    textLabel->setFocusPolicy(Qt::StrongFocus);
    // A long sentence (some languages need far more room) is cut at the
    // strip's end rather than forcing the whole window wider.
    textLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    refreshButton = new htk::IconButton(QIcon::fromTheme(QStringLiteral("fbnubix_file_syncing")), this);
    refreshButton->setObjectName(QStringLiteral("refreshButton"));
    refreshButton->setFixedSize(16, 16);

    layout->addWidget(iconLabel);
    layout->addWidget(textLabel);
    layout->addWidget(refreshButton, 2);
    refreshButton->hide();

    onSyncInfoUpdated();
}

void NubixTitleWidget::connects()
{
    connect(refreshButton, &QAbstractButton::clicked, this, &NubixTitleWidget::doCheckUpdate);
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    connect(handler, &NubixMessageHandler::sigSyncQuantityChanged, this, &NubixTitleWidget::onSyncProgressUpdated);
    connect(handler, &NubixMessageHandler::sigSyncErrorOccured, this, &NubixTitleWidget::onSyncInfoUpdated);
    connect(NubixCaches::instance(), &NubixCaches::syncInfoUpdated, this, &NubixTitleWidget::onSyncInfoUpdated);
    connect(textLabel, &QLabel::linkActivated, this, &NubixTitleWidget::onLinkActivated);
}

void NubixTitleWidget::updateTitle(const QString &text, const QString &iconName)
{
    currentIcon = iconName;
    textLabel->setText(text);
    const QIcon icon = QIcon::fromTheme(iconName, QIcon::fromTheme(QString()));
    iconLabel->setPixmap(icon.pixmap(QSize(kIconSize, kIconSize), QIcon::Normal, QIcon::Off));

    // A screen reader reads the sentence as the user sees it, without markup.
    const QString plain = plainText();
    setAccessibleName(plain);
    setAccessibleDescription(plain);
    textLabel->setAccessibleName(plain);
    textLabel->setAccessibleDescription(plain);
}

QString NubixTitleWidget::text() const
{
    return textLabel ? textLabel->text() : QString();
}

QString NubixTitleWidget::plainText() const
{
    return QTextDocumentFragment::fromHtml(text()).toPlainText();
}

QString NubixTitleWidget::iconName() const
{
    return currentIcon;
}

void NubixTitleWidget::onSyncInfoUpdated()
{
    const SyncInfo info = NubixCaches::instance()->syncInfo();
    const SyncError &errors = info.syncErrors;
    if (errors.isPaused) {
        updateTitle(tr("The current synchronization has been paused, click <a href=\"%1\">Continue Synchronization "
                       "</a>to keep the synchronization status")
                        .arg(kLinkSyncContinue),
            kIconPause);
    } else if (errors.isLocalSpaceLow) {
        updateTitle(tr("Insufficient local disk space, some files cannot be synchronized"), kIconError);
    } else if (errors.isRemoteSpaceLow) {
        updateTitle(tr("Insufficient cloud disk space"), kIconError);
    } else if (!errors.isOnline) {
        updateTitle(tr("Currently the network is not available, please check the network connection"), kIconNetwork);
    } else if (errors.isFlowEmpty) {
        updateTitle(tr("The flow rate has been exhausted"), kIconError);
    } else {
        onSyncProgressUpdated(info.syncQuantity);
    }

    // A summary no live client has confirmed says nothing about now.
    if (info.isDisconnected) {
        updateTitle(tr("File synchronization has been suspended, please <a href=\"%1\">start the Kelo Drive client "
                       "</a>first")
                        .arg(kLinkLaunchApp),
            kIconPause);
    }
}

void NubixTitleWidget::onSyncProgressUpdated(const SyncQuantity &quantity)
{
    if (!textLabel)
        return;
    syncing = true;
    const qint64 remaining = qint64(quantity.todo) + quantity.doing;
    if (remaining > 0) {
        if (quantity.error != 0) {
            updateTitle(tr("%1 completed, %2 remaining, %3 anomalies. <a href=\"%4\">View synchronization details</a>")
                            .arg(QString::number(quantity.done), QString::number(remaining),
                                QString::number(quantity.error), kLinkSyncDetail),
                kIconSyncing);
        } else {
            updateTitle(tr("%1 completed, %2 remaining. <a href=\"%3\">View synchronization details</a>")
                            .arg(QString::number(quantity.done), QString::number(remaining), kLinkSyncDetail),
                kIconSyncing);
        }
        return;
    }

    syncing = false;
    if (quantity.error != 0) {
        updateTitle(tr("Kelo Drive Synchronization %1 Exception, <a href=\"%2\">view</a>")
                        .arg(QString::number(quantity.error), kLinkErrorList),
            kIconError);
    } else {
        updateTitle(tr("Files have been synchronized"), kIconDone);
    }
}

void NubixTitleWidget::doCheckUpdate()
{
    if (NubixCaches::instance()->syncInfo().isDisconnected || syncing) {
        nubixDebug() << "Kelo Drive client offline or under updating, ignore request.";
        return;
    }
    nubixDebug() << "request updating...";
    updateTitle(tr("Checking for updated synchronization files"), kIconSyncing);
    QTimer::singleShot(kRefreshDelayMs, this, [] {
        NubixMessageHandler::instance()->requestSyncStart();
        NubixMessageHandler::instance()->requestSyncInfo();
    });
}

void NubixTitleWidget::onLinkActivated(const QString &link)
{
    NubixMessageHandler *handler = NubixMessageHandler::instance();
    if (link == kLinkLaunchApp) {
        NubixMessageHandler::launchApp();
        handler->tryConnect();
    } else if (link == kLinkErrorList) {
        handler->requestNavigate(PageType::ErrorList);
    } else if (link == kLinkSyncContinue) {
        handler->requestSyncResume();
    } else if (link == kLinkSyncDetail) {
        handler->requestNavigate(PageType::SyncList);
    } else {
        nubixWarning() << Q_FUNC_INFO << "Unhandled link type!" << link;
    }
}

}   // namespace hfmplugin_nubix
