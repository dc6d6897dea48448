#include "DisplayCard.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ColorControls.h"
#include "DisplayMenus.h"
#include "ElidedLabel.h"
#include "SliderRow.h"
#include "Symbols.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

// The brightness slider never takes a software-dimmed display fully black: a black screen
// cannot show the slider that would bring it back. Dim-to-black is a separate action.
// Shown for a DDC control the monitor did not report; the model assumes the same for
// brightness.
constexpr int kHeaderIconSize = 18;
constexpr int kMenuIconSize = 18;

QPushButton* smallButton(const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setFont(style::captionFont());
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

}  // namespace

DisplayCard::DisplayCard(UiContext& context, CardShape shape, QWidget* parent)
    : QFrame(parent), context_(context), shape_(std::move(shape)) {
    style::makeBlockLayout(this, QStringLiteral("card"));
    buildHeader();
    buildSwitchOff();
    if (shape_.controls) {
        buildSliders();
        buildControls();
    }
    updateValues();
}

void DisplayCard::buildHeader() {
    auto* row = new QHBoxLayout;
    row->setSpacing(style::kRowSpacing);
    auto* icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("displaySymbol"));
    icon->setProperty("symbol", shape_.symbol);
    icon->setPixmap(
        symbolPixmap(shape_.symbol, QSize(kHeaderIconSize, kHeaderIconSize), style::labelColor()));
    icon->setFixedSize(kHeaderIconSize, kHeaderIconSize);
    row->addWidget(icon);

    auto* name = new ElidedLabel(QString::fromStdString(shape_.display.name), this);
    name->setObjectName(QStringLiteral("displayName"));
    QFont nameFont = style::bodyFont();
    nameFont.setWeight(QFont::DemiBold);
    name->setFont(nameFont);
    row->addWidget(name, 1);
    for (const QString& text : shape_.badges) {
        QLabel* badge = style::makeBadge(text, this);
        if (text == QStringLiteral("отключён")) badge->setProperty("tone", "muted");
        row->addWidget(badge);
    }
    qobject_cast<QVBoxLayout*>(layout())->addLayout(row);

    if (!shape_.statusText.isEmpty()) {
        auto* status = style::makeLabel(shape_.statusText, style::captionFont(), this);
        status->setObjectName(QStringLiteral("status"));
        style::setTextColor(status, style::secondaryLabelColor());
        layout()->addWidget(status);
    }
}

void DisplayCard::buildSwitchOff() {
    if (!shape_.offerDisconnect && !shape_.offerConnect) return;
    const bool connect = shape_.offerConnect;
    switchOff_ = smallButton(connect ? QStringLiteral("Подключить")
                                     : QStringLiteral("Отключить (без отсоединения кабеля)"),
                             this);
    switchOff_->setObjectName(QStringLiteral("switchOff"));
    // A command, not a setting: drawn as a link so the card stays calm.
    switchOff_->setFlat(true);
    QObject::connect(switchOff_, &QPushButton::clicked, this,
                     [this, connect] { context_.model.setEnabled(displayID(), connect); });
    layout()->addWidget(switchOff_);
}

void DisplayCard::buildSliders() {
    brightness_ = SliderRow::withSymbol(QStringLiteral("sun.min"), 0, 1, this);
    brightness_->setObjectName(QStringLiteral("brightness"));
    brightness_->setOnChanged(
        [this](double value) { context_.model.brightness().setFromSlider(displayID(), value); });
    layout()->addWidget(brightness_);

    if (shape_.softwareCaption) {
        softwareCaption_ = style::makeLabel(
            QStringLiteral(
                "Яркость программно — монитор не отвечает по DDC (включите DDC/CI в его меню)"),
            style::captionFont(), this, /*wrap=*/true);
        softwareCaption_->setObjectName(QStringLiteral("softwareCaption"));
        style::setTextColor(softwareCaption_, style::secondaryLabelColor());
        layout()->addWidget(softwareCaption_);
    }

    if (!shape_.ddc) return;
    const auto ddcRow = [this](const QString& symbol, const QString& name, VCP vcp) {
        auto* row = SliderRow::withSymbol(symbol, 0, 1, this);
        row->setObjectName(name);
        row->setOnChanged([this, vcp](double value) {
            context_.model.ddc().set(displayID(), vcp, value, BrightnessControl::kDdcBrightnessMax);
        });
        layout()->addWidget(row);
        return row;
    };
    if (shape_.contrast) {
        contrast_ = ddcRow(QStringLiteral("circle.lefthalf.filled"), QStringLiteral("contrast"),
                           VCP::contrast);
    }
    if (shape_.volume)
        volume_ = ddcRow(QStringLiteral("speaker.wave.2"), QStringLiteral("volume"), VCP::volume);
}

void DisplayCard::buildControls() {
    auto* row = new QHBoxLayout;
    row->setSpacing(style::kRowSpacing);

    if (shape_.modes) {
        modeButton_ = smallButton(QStringLiteral("Разрешение"), this);
        modeButton_->setObjectName(QStringLiteral("modeButton"));
        modeMenu_ = new QMenu(modeButton_);
        modeButton_->setMenu(modeMenu_);
        QObject::connect(modeMenu_, &QMenu::aboutToShow, this,
                         [this] { fillModeMenu(*modeMenu_, context_, displayID()); });
        row->addWidget(modeButton_);
    }
    row->addStretch(1);

    moreButton_ = new QToolButton(this);
    moreButton_->setObjectName(QStringLiteral("moreButton"));
    moreButton_->setIcon(symbolIcon(QStringLiteral("ellipsis.circle"), style::labelColor()));
    moreButton_->setIconSize(QSize(kMenuIconSize, kMenuIconSize));
    moreButton_->setPopupMode(QToolButton::InstantPopup);
    moreButton_->setAutoRaise(true);
    moreButton_->setToolTip(QStringLiteral("Ещё"));
    // The symbol already says "menu"; Qt's arrow would only crowd it.
    moreButton_->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
    moreMenu_ = new QMenu(moreButton_);
    moreButton_->setMenu(moreMenu_);
    QObject::connect(moreMenu_, &QMenu::aboutToShow, this,
                     [this] { fillMoreMenu(*moreMenu_, context_, shape_); });
    row->addWidget(moreButton_);

    if (shape_.colour) {
        colorToggle_ = smallButton(QStringLiteral("Цвет и затемнение"), this);
        colorToggle_->setObjectName(QStringLiteral("colorToggle"));
        colorToggle_->setCheckable(true);
        QObject::connect(colorToggle_, &QPushButton::clicked, this,
                         [this](bool on) { toggleExpanded(on); });
        row->addWidget(colorToggle_);
    }
    qobject_cast<QVBoxLayout*>(layout())->addLayout(row);

    if (shape_.colour) {
        colorControls_ = new ColorControls(context_.model, displayID(), this);
        colorControls_->setVisible(false);
        layout()->addWidget(colorControls_);
    }
}

void DisplayCard::updateValues() {
    if (!shape_.controls) return;
    brightness_->setValue(context_.model.brightness().level(displayID()));
    if (contrast_) contrast_->setValue(ddcValue(VCP::contrast));
    if (volume_) volume_->setValue(ddcValue(VCP::volume));

    if (!colorToggle_) return;
    const bool expanded = context_.model.expandedColor()->contains(displayID());
    colorToggle_->setChecked(expanded);
    if (colorControls_->isVisibleTo(this) != expanded) colorControls_->setVisible(expanded);
    if (expanded) colorControls_->updateValues();
}

double DisplayCard::ddcValue(VCP vcp) const {
    return context_.model.ddc()
        .value(displayID(), vcp)
        .value_or(BrightnessControl::kUnknownDdcBrightness);
}

void DisplayCard::toggleExpanded(bool expanded) {
    std::set<DisplayID> ids = context_.model.expandedColor().get();
    if (expanded) {
        ids.insert(displayID());
    } else {
        ids.erase(displayID());
    }
    context_.model.setExpandedColor(std::move(ids));
}

}  // namespace lumora::ui
