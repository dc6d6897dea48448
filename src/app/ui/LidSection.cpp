#include "LidSection.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "ToggleRow.h"
#include "UiStyle.h"

namespace lumora::ui {

LidSection::LidSection(UiContext& context, QWidget* parent) : QFrame(parent), context_(context) {
    auto* layout = style::makeBlockLayout(this, QStringLiteral("section"));
    layout->addWidget(style::makeHeading(QStringLiteral("Крышка и сон"), this));

    const auto toggle = [this, layout](const QString& text, const char* name) {
        auto* row = new ToggleRow(text, this);
        row->setObjectName(QString::fromLatin1(name));
        layout->addWidget(row);
        return row;
    };

    turnOffPanel_ = toggle(QStringLiteral("Закрыта + внешний монитор: выключать встроенный экран"),
                           "turnOffPanelWithExternal");
    turnOffPanel_->setOnToggled([this](bool on) {
        changeConfig([on](LidConfig& config) { config.turnOffPanelWithExternal = on; });
    });
    disconnectBuiltin_ =
        toggle(QStringLiteral("Открыта + внешний монитор: тоже выключать встроенный"),
               "disconnectBuiltinWhenExternal");
    disconnectBuiltin_->setOnToggled([this](bool on) {
        changeConfig([on](LidConfig& config) { config.disconnectBuiltinWhenExternal = on; });
    });
    dim_ = toggle(QStringLiteral("Закрыта: подсветку в 0 (защита от «тиков» тачпада/BT)"),
                  "dimWhenClosed");
    dim_->setOnToggled(
        [this](bool on) { changeConfig([on](LidConfig& config) { config.dimWhenClosed = on; }); });

    auto* delayRow = new QHBoxLayout;
    delayRow->setSpacing(style::kRowSpacing * 2);
    delayRow->addWidget(style::makeLabel(QStringLiteral("Сон при закрытой крышке без монитора"),
                                         style::bodyFont(), this, /*wrap=*/true),
                        1);
    delay_ = new QComboBox(this);
    delay_->setObjectName(QStringLiteral("sleepDelay"));
    delay_->setFont(style::captionFont());
    for (const Delay& delay : kDelays) {
        delay_->addItem(QString::fromUtf8(delay.title), delay.seconds);
    }
    connect(delay_, &QComboBox::activated, this, [this](int index) {
        if (index < 0) return;
        const double seconds = delay_->itemData(index).toDouble();
        changeConfig([seconds](LidConfig& config) { config.sleepDelay = seconds; });
    });
    delayRow->addWidget(delay_, 0, Qt::AlignVCenter);
    layout->addLayout(delayRow);

    AppModel& model = context_.model;
    preventSleep_ = toggle(QStringLiteral("Не засыпать, пока подключён внешний монитор"),
                           "preventSleepWithExternal");
    preventSleep_->setOnToggled([&model](bool on) { model.setPreventSleepWithExternal(on); });
    restore_ = toggle(QStringLiteral("Восстанавливать яркость после сна"), "restoreAfterWake");
    restore_->setOnToggled([&model](bool on) { model.setRestoreAfterWake(on); });
    login_ = toggle(QStringLiteral("Запускать при входе в систему"), "loginItem");
    login_->setOnToggled([this](bool on) {
        context_.session.setLoginItemEnabled(on);
        // The switch shows what the system did, not what was asked.
        login_->setChecked(context_.session.loginItemEnabled());
    });
    updateValues();
}

template <class Change>
void LidSection::changeConfig(Change change) {
    LidConfig config = context_.model.lidConfig().get();
    change(config);
    context_.model.setLidConfig(config);
}

void LidSection::updateValues() {
    const LidConfig& config = context_.model.lidConfig().get();
    turnOffPanel_->setChecked(config.turnOffPanelWithExternal);
    disconnectBuiltin_->setChecked(config.disconnectBuiltinWhenExternal);
    dim_->setChecked(config.dimWhenClosed);
    {
        // Only the listed delays are selectable; any other value selects nothing.
        const QSignalBlocker blocker(delay_);
        int index = -1;
        for (int i = 0; i < delay_->count(); ++i) {
            if (delay_->itemData(i).toDouble() == config.sleepDelay) index = i;
        }
        delay_->setCurrentIndex(index);
    }
    preventSleep_->setChecked(context_.model.preventSleepWithExternal().get());
    restore_->setChecked(context_.model.restoreAfterWake().get());
    login_->setChecked(context_.session.loginItemEnabled());
}

}  // namespace lumora::ui
