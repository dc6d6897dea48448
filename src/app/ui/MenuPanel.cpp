#include "MenuPanel.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <limits>

#include "AdaptiveSection.h"
#include "DisplayCard.h"
#include "KeysSection.h"
#include "LidSection.h"
#include "ModelWatcher.h"
#include "PanelText.h"
#include "Symbols.h"
#include "UiStyle.h"
#include "VirtualSection.h"

namespace lumora::ui {

namespace {

constexpr int kLidIconSize = 16;
// Between header, sections and footer.
constexpr int kBlockSpacing = 10;
// Keeps the cards off the scroll bar.
constexpr int kScrollBarGap = 6;

int primaryScreenHeight() {
    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        return screen->availableGeometry().height();
    }
    return std::numeric_limits<int>::max();
}

}  // namespace

MenuPanel::MenuPanel(UiContext context, QWidget* parent)
    : QWidget(parent), context_(std::move(context)), availableHeight_(primaryScreenHeight()) {
    setObjectName(QStringLiteral("menuPanel"));
    setFixedWidth(style::kPanelWidth);
    setStyleSheet(style::panelStyleSheet());
    setFont(style::bodyFont());

    outer_ = new QVBoxLayout(this);
    outer_->setContentsMargins(style::kPadding, style::kPadding, style::kPadding, style::kPadding);
    outer_->setSpacing(kBlockSpacing);
    buildHeader(outer_);

    sections_ = new QWidget(this);
    sections_->setObjectName(QStringLiteral("sections"));
    sectionsLayout_ = new QVBoxLayout(sections_);
    sectionsLayout_->setContentsMargins(0, 0, 0, 0);
    sectionsLayout_->setSpacing(style::kSectionSpacing);
    virtual_ = new VirtualSection(context_, sections_);
    adaptive_ = new AdaptiveSection(context_, sections_);
    keys_ = new KeysSection(context_, sections_);
    lid_ = new LidSection(context_, sections_);
    sectionsLayout_->addWidget(virtual_);
    sectionsLayout_->addWidget(adaptive_);
    sectionsLayout_->addWidget(keys_);
    sectionsLayout_->addWidget(lid_);
    outer_->addWidget(sections_);

    buildFooter(outer_);
    watcher_ = new ModelWatcher(
        context_.model.objectWillChange(), [this] { updateFromModel(); }, this);
    updateFromModel();
}

MenuPanel::~MenuPanel() = default;

QSize MenuPanel::sizeHint() const {
    return {style::kPanelWidth, heightForWidth(style::kPanelWidth)};
}

void MenuPanel::buildHeader(QVBoxLayout* layout) {
    auto* row = new QHBoxLayout;
    row->setSpacing(style::kRowSpacing);
    auto* title = style::makeLabel(QStringLiteral("Lumora"), style::headlineFont(), this);
    title->setObjectName(QStringLiteral("title"));
    row->addWidget(title);
    row->addStretch(1);
    lidIcon_ = new QLabel(this);
    lidIcon_->setObjectName(QStringLiteral("lidSymbol"));
    lidIcon_->setFixedSize(kLidIconSize, kLidIconSize);
    row->addWidget(lidIcon_);
    lidText_ = style::makeLabel({}, style::captionFont(), this);
    lidText_->setObjectName(QStringLiteral("lidText"));
    style::setTextColor(lidText_, style::secondaryLabelColor());
    row->addWidget(lidText_);
    layout->addLayout(row);
}

void MenuPanel::buildFooter(QVBoxLayout* layout) {
    auto* row = new QHBoxLayout;
    row->setSpacing(style::kRowSpacing);
    log_ = new QPushButton(QStringLiteral("Лог"), this);
    log_->setObjectName(QStringLiteral("log"));
    connect(log_, &QPushButton::clicked, this, [this] {
        const QUrl url = QUrl::fromLocalFile(QString::fromStdString(context_.logFile.string()));
        if (context_.openUrl) {
            context_.openUrl(url);
        } else {
            QDesktopServices::openUrl(url);
        }
    });
    refresh_ = new QPushButton(QStringLiteral("Обновить"), this);
    refresh_->setObjectName(QStringLiteral("refresh"));
    connect(refresh_, &QPushButton::clicked, this, [this] {
        context_.model.refresh();
        context_.model.ddc().rescan();
    });
    quit_ = new QPushButton(QStringLiteral("Выйти"), this);
    quit_->setObjectName(QStringLiteral("quit"));
    connect(quit_, &QPushButton::clicked, this, [this] {
        if (context_.quit) context_.quit();
    });
    row->addWidget(log_);
    row->addWidget(refresh_);
    row->addStretch(1);
    row->addWidget(quit_);
    layout->addLayout(row);
}

void MenuPanel::updateFromModel() {
    updateHeader();
    updateCards();
    virtual_->updateValues();
    adaptive_->updateValues();
    keys_->updateValues();
    lid_->updateValues();
    fitOrScroll();
}

void MenuPanel::updateHeader() {
    const AppModel& model = context_.model;
    const LidMode mode = model.lidMode().get();
    lidText_->setText(lidText(mode, model.lidAngle().get()));
    const QString symbol = lidSymbol(mode);
    if (lidIcon_->property("symbol").toString() != symbol) {
        lidIcon_->setProperty("symbol", symbol);
        lidIcon_->setPixmap(
            symbolPixmap(symbol, QSize(kLidIconSize, kLidIconSize), style::secondaryLabelColor()));
    }
}

QString MenuPanel::lidSymbolName() const {
    return lidIcon_->property("symbol").toString();
}

void MenuPanel::updateCards() {
    const AppModel& model = context_.model;
    std::map<DisplayID, DisplayCard*> old;
    for (DisplayCard* card : cards_)
        old[card->displayID()] = card;

    std::vector<DisplayCard*> next;
    for (const DisplayInfo& display : model.displays().get()) {
        CardFacts facts;
        facts.switchedOffByUs = context_.displays.disconnected().contains(display.id);
        facts.brightness = model.brightness().path(display.id);
        facts.hidpiOn = model.hidpiOn()->contains(display.id);
        facts.lidMode = model.lidMode().get();
        facts.can = model.capabilities();
        if (auto caps = model.ddc().capabilities()->find(display.id);
            caps != model.ddc().capabilities()->end()) {
            facts.ddcCapabilities = caps->second;
        }
        CardShape shape = cardShape(display, facts);

        DisplayCard* card = nullptr;
        auto found = old.find(display.id);
        if (found != old.end() && found->second->shape() == shape) {
            card = found->second;
            old.erase(found);
            card->updateValues();
        } else {
            card = new DisplayCard(context_, std::move(shape), sections_);
        }
        next.push_back(card);
    }
    // Cards whose display went away or changed shape.
    for (const auto& [id, card] : old) {
        sectionsLayout_->removeWidget(card);
        card->hide();
        card->deleteLater();
    }
    if (next != cards_) {
        for (DisplayCard* card : next)
            sectionsLayout_->removeWidget(card);
        for (std::size_t i = 0; i < next.size(); ++i) {
            sectionsLayout_->insertWidget(static_cast<int>(i), next[i]);
            next[i]->show();
        }
        cards_ = std::move(next);
    }
}

std::vector<DisplayCard*> MenuPanel::cards() const {
    return cards_;
}

DisplayCard* MenuPanel::card(DisplayID id) const {
    auto found = std::find_if(cards_.begin(), cards_.end(),
                              [id](DisplayCard* card) { return card->displayID() == id; });
    return found == cards_.end() ? nullptr : *found;
}

void MenuPanel::setAvailableHeight(int height) {
    availableHeight_ = height;
    fitOrScroll();
}

int MenuPanel::naturalSectionsHeight() const {
    const int width = style::kPanelWidth - 2 * style::kPadding;
    return sections_->hasHeightForWidth() ? sections_->heightForWidth(width)
                                          : sections_->sizeHint().height();
}

void MenuPanel::fitOrScroll() {
    const int sections = naturalSectionsHeight();
    const int header = outer_->itemAt(0)->sizeHint().height();
    const int footer = outer_->itemAt(outer_->count() - 1)->sizeHint().height();
    const int whole = 2 * style::kPadding + header + footer + 2 * kBlockSpacing + sections;
    const bool fits = whole <= availableHeight_;

    if (fits && scroll_) {
        scroll_->takeWidget();
        delete outer_->replaceWidget(scroll_, sections_);
        sections_->setParent(this);
        sections_->show();
        // Never called from the scroll area's own events (updates are queued), so it can go now.
        delete scroll_;
        scroll_ = nullptr;
    } else if (!fits && !scroll_) {
        scroll_ = new QScrollArea(this);
        scroll_->setObjectName(QStringLiteral("sectionsScroll"));
        scroll_->setFrameShape(QFrame::NoFrame);
        scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
        scroll_->setWidgetResizable(true);
        scroll_->setStyleSheet(
            QStringLiteral("QScrollArea, QScrollArea > QWidget > QWidget#sections "
                           "{ background: transparent; }"));
        scroll_->viewport()->setAutoFillBackground(false);
        delete outer_->replaceWidget(sections_, scroll_);
        scroll_->setWidget(sections_);
        scroll_->show();
    }
    sectionsLayout_->setContentsMargins(0, 0, scroll_ ? kScrollBarGap : 0, 0);
    if (scroll_) scroll_->setFixedHeight(std::min(sections, kMaxSectionsHeight));
    updateGeometry();
}

}  // namespace lumora::ui
