#include "KeysSection.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "PanelText.h"
#include "ShortcutRecorder.h"
#include "ToggleRow.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

QString utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// Short labels ("—", "⌃⌥⌘B") still get a button that is easy to hit; longer texts widen it.
constexpr int kShortcutButtonMinWidth = 76;

QString recordingHint(KeyNames names) {
    return names == KeyNames::symbols
               ? QStringLiteral(
                     "Запись: нажмите кнопку и сочетание с ⌘/⌥/⌃/⇧. Esc — отмена, ⌫ — очистить.")
               : QStringLiteral(
                     "Запись: нажмите кнопку и сочетание с Ctrl/Alt/Shift/Super. "
                     "Esc — отмена, Backspace — очистить.");
}

}  // namespace

KeysSection::KeysSection(UiContext& context, QWidget* parent) : QFrame(parent), context_(context) {
    auto* layout = style::makeBlockLayout(this, QStringLiteral("section"));
    layout->addWidget(style::makeHeading(QStringLiteral("Клавиши"), this));

    AppModel& model = context_.model;
    brightnessKeys_ = new ToggleRow(
        context_.keyNames == KeyNames::symbols
            ? QStringLiteral("Клавиши яркости Mac управляют внешним монитором под курсором")
            : QStringLiteral("Клавиши яркости управляют внешним монитором под курсором"),
        this);
    brightnessKeys_->setObjectName(QStringLiteral("brightnessKeys"));
    brightnessKeys_->setOnToggled([&model](bool on) { model.setBrightnessKeys(on); });
    layout->addWidget(brightnessKeys_);

    permission_ = new QWidget(this);
    permission_->setObjectName(QStringLiteral("permission"));
    auto* permissionRow = new QHBoxLayout(permission_);
    permissionRow->setContentsMargins(0, 0, 0, 0);
    permissionRow->setSpacing(style::kRowSpacing);
    auto* warning = style::makeLabel(QStringLiteral("Нужен доступ «Универсальный доступ»"),
                                     style::captionFont(), permission_, /*wrap=*/true);
    style::setTextColor(warning, style::warningColor());
    permissionRow->addWidget(warning, 1);
    auto* allow = new QPushButton(QStringLiteral("Разрешить"), permission_);
    allow->setObjectName(QStringLiteral("allow"));
    allow->setFont(style::captionFont());
    connect(allow, &QPushButton::clicked, this, [this] {
        if (context_.promptForTrust) context_.promptForTrust();
    });
    auto* check = new QPushButton(QStringLiteral("Проверить"), permission_);
    check->setObjectName(QStringLiteral("check"));
    check->setFont(style::captionFont());
    connect(check, &QPushButton::clicked, this, [&model] { model.updateMediaKeys(); });
    permissionRow->addWidget(allow);
    permissionRow->addWidget(check);
    layout->addWidget(permission_);

    for (ShortcutAction action : kAllShortcutActions) {
        auto* row = new QHBoxLayout;
        row->setSpacing(style::kRowSpacing);
        QLabel* title = style::makeLabel(utf8(lumora::title(action)), style::bodyFont(), this,
                                         /*wrap=*/true);
        row->addWidget(title, 1);
        auto* button = new QPushButton(this);
        button->setObjectName(QStringLiteral("shortcut.") + utf8(rawValue(action)));
        button->setFont(style::monospacedCaptionFont());
        button->setMinimumWidth(kShortcutButtonMinWidth);
        button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        connect(button, &QPushButton::clicked, this, [&model, action] {
            if (model.recording().get() == action) {
                model.stopRecording();
            } else {
                model.startRecording(action);
            }
        });
        row->addWidget(button, 0, Qt::AlignVCenter);
        buttons_[action] = button;
        layout->addLayout(row);
    }

    footnote_ = style::makeLabel({}, style::captionFont(), this, /*wrap=*/true);
    style::setTextColor(footnote_, style::secondaryLabelColor());
    footnote_->setObjectName(QStringLiteral("keysFootnote"));
    layout->addWidget(footnote_);

    recorder_ = new ShortcutRecorder(model, this);
    updateValues();
}

void KeysSection::updateValues() {
    const AppModel& model = context_.model;
    brightnessKeys_->setChecked(model.brightnessKeys().get());
    permission_->setVisible(model.brightnessKeys().get() && !model.accessibilityOK().get());
    const bool byDesktop = model.shortcutsByDesktop();
    const bool available = model.capabilities().globalKeys;
    for (const auto& [action, button] : buttons_) {
        if (byDesktop) {
            const auto& triggers = model.desktopTriggers().get();
            const auto trigger = triggers.find(action);
            button->setText(trigger == triggers.end() || trigger->second.empty()
                                ? QStringLiteral("—")
                                : QString::fromStdString(trigger->second));
        } else {
            button->setText(shortcutButtonText(action, model.recording().get(),
                                               model.shortcuts().get(), context_.keyNames));
        }
        button->setEnabled(available);
    }
    if (byDesktop) {
        footnote_->setText(QStringLiteral(
            "Сочетания назначает рабочий стол: измените их в его настройках клавиатуры."));
    } else if (!available) {
        footnote_->setText(
            QStringLiteral("Глобальные сочетания недоступны: рабочий стол не даёт их программам."));
    } else {
        footnote_->setText(recordingHint(context_.keyNames));
    }
    recorder_->sync();
}

}  // namespace lumora::ui
