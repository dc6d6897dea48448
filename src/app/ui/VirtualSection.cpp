#include "VirtualSection.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include "ElidedLabel.h"
#include "PanelText.h"
#include "Switch.h"
#include "Symbols.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

constexpr int kButtonIconSize = 14;

}  // namespace

VirtualSection::VirtualSection(UiContext& context, QWidget* parent)
    : QFrame(parent), context_(context) {
    auto* layout = style::makeBlockLayout(this, QStringLiteral("section"));

    auto* heading = new QHBoxLayout;
    heading->setSpacing(style::kRowSpacing);
    heading->addWidget(style::makeHeading(QStringLiteral("Виртуальные экраны"), this));
    heading->addStretch(1);
    unavailable_ = style::makeLabel(QStringLiteral("недоступно"), style::captionFont(), this);
    unavailable_->setObjectName(QStringLiteral("unavailable"));
    style::setTextColor(unavailable_, style::secondaryLabelColor());
    heading->addWidget(unavailable_);
    layout->addLayout(heading);

    auto* controls = new QHBoxLayout;
    controls->setSpacing(style::kRowSpacing);
    hidpi_ = new QCheckBox(QStringLiteral("HiDPI"), this);
    hidpi_->setObjectName(QStringLiteral("virtualHiDPI"));
    hidpi_->setFont(style::captionFont());
    AppModel& model = context_.model;
    connect(hidpi_, &QCheckBox::clicked, this, [&model](bool on) { model.setVirtualHiDPI(on); });
    controls->addWidget(hidpi_);
    controls->addStretch(1);

    add_ = new QPushButton(QStringLiteral("Добавить"), this);
    add_->setObjectName(QStringLiteral("add"));
    add_->setFont(style::captionFont());
    add_->setIcon(symbolIcon(QStringLiteral("plus"), style::labelColor()));
    add_->setIconSize(QSize(kButtonIconSize, kButtonIconSize));
    addMenu_ = new QMenu(add_);
    for (const VirtualScreenPreset& preset : VirtualScreens::presets) {
        QAction* action = addMenu_->addAction(QString::fromUtf8(preset.label));
        connect(action, &QAction::triggered, this,
                [this, width = preset.width, height = preset.height] {
                    AppModel& m = context_.model;
                    m.addVirtualScreen(VirtualScreenConfig::defaultName(width, height), width,
                                       height, VirtualScreenConfig::kDefaultRefresh,
                                       m.virtualHiDPI().get());
                    changed();
                });
    }
    add_->setMenu(addMenu_);
    controls->addWidget(add_);
    layout->addLayout(controls);

    rowsLayout_ = new QVBoxLayout;
    rowsLayout_->setSpacing(style::kRowSpacing);
    layout->addLayout(rowsLayout_);
    updateValues();
}

void VirtualSection::updateValues() {
    AppModel& model = context_.model;
    VirtualScreens& screens = model.virtualScreens();
    const bool available = screens.available();
    unavailable_->setVisible(!available);
    add_->setEnabled(available);
    {
        const QSignalBlocker blocker(hidpi_);
        hidpi_->setChecked(model.virtualHiDPI().get());
    }

    // The manager's own list: it changes with every switch and delete made here.
    const std::vector<VirtualScreenConfig>& configs = screens.configs();
    std::vector<RowKey> keys;
    keys.reserve(configs.size());
    for (const VirtualScreenConfig& c : configs) {
        keys.push_back({c.id, c.name, c.width, c.height, c.hiDPI});
    }
    if (keys != keys_) {
        keys_ = std::move(keys);
        rebuildRows(configs);
    }
    for (std::size_t i = 0; i < switches_.size(); ++i) {
        const QSignalBlocker blocker(switches_[i]);
        switches_[i]->setChecked(configs[i].enabled);
        switches_[i]->setEnabled(available);
    }
}

void VirtualSection::rebuildRows(const std::vector<VirtualScreenConfig>& configs) {
    for (QWidget* row : rows_) {
        row->hide();
        row->deleteLater();
    }
    rows_.clear();
    switches_.clear();
    for (const VirtualScreenConfig& config : configs) {
        QWidget* row = makeRow(config);
        rows_.push_back(row);
        rowsLayout_->addWidget(row);
    }
}

QWidget* VirtualSection::makeRow(const VirtualScreenConfig& config) {
    auto* row = new QWidget(this);
    row->setObjectName(QStringLiteral("virtualScreen"));
    row->setProperty("configID", static_cast<qulonglong>(config.id));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(style::kRowSpacing + 2);

    auto* toggle = new Switch(row);
    toggle->setObjectName(QStringLiteral("enabled"));
    const std::uint32_t id = config.id;
    connect(toggle, &Switch::clicked, this, [this, id](bool on) {
        context_.model.setVirtualScreenEnabled(id, on);
        changed();
    });
    layout->addWidget(toggle);
    switches_.push_back(toggle);

    auto* name = new ElidedLabel(QString::fromStdString(config.name), row);
    name->setObjectName(QStringLiteral("name"));
    name->setFont(style::bodyFont());
    layout->addWidget(name, 1);

    auto* size = style::makeLabel(virtualSizeText(config), style::captionFont(), row);
    size->setObjectName(QStringLiteral("size"));
    style::setTextColor(size, style::secondaryLabelColor());
    layout->addWidget(size);

    auto* remove = new QToolButton(row);
    remove->setObjectName(QStringLiteral("delete"));
    remove->setIcon(symbolIcon(QStringLiteral("trash"), style::labelColor()));
    remove->setIconSize(QSize(kButtonIconSize, kButtonIconSize));
    remove->setAutoRaise(true);
    remove->setToolTip(QStringLiteral("Удалить"));
    connect(remove, &QToolButton::clicked, this, [this, id] {
        context_.model.removeVirtualScreen(id);
        changed();
    });
    layout->addWidget(remove);
    return row;
}

void VirtualSection::changed() {
    context_.model.refresh();
    updateValues();
}

}  // namespace lumora::ui
