#include "AdaptiveSection.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QVBoxLayout>

#include "ToggleRow.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

// A number the user typed, with a comma or a point.
std::optional<double> typedNumber(const QLineEdit* field) {
    QString text = field->text().trimmed();
    text.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? std::optional<double>(value) : std::nullopt;
}

}  // namespace

AdaptiveSection::AdaptiveSection(UiContext& context, QWidget* parent)
    : QFrame(parent), context_(context) {
    setObjectName(QStringLiteral("adaptiveSection"));
    auto* layout = style::makeBlockLayout(this, QStringLiteral("section"));
    layout->addWidget(style::makeHeading(QStringLiteral("Адаптивная яркость"), this));

    auto* modeRow = new QHBoxLayout;
    modeRow->setSpacing(style::kRowSpacing * 2);
    modeRow->addWidget(style::makeLabel(QStringLiteral("Мониторы следуют"), style::bodyFont(), this,
                                        /*wrap=*/true),
                       1);
    mode_ = new QComboBox(this);
    mode_->setObjectName(QStringLiteral("adaptiveMode"));
    mode_->setFont(style::captionFont());
    for (const Choice& choice : kChoices)
        mode_->addItem(QString::fromUtf8(choice.title));
    connect(mode_, &QComboBox::activated, this, [this](int index) { choose(index); });
    modeRow->addWidget(mode_, 0, Qt::AlignVCenter);
    layout->addLayout(modeRow);

    problem_ = style::makeLabel({}, style::captionFont(), this, /*wrap=*/true);
    problem_->setObjectName(QStringLiteral("adaptiveProblem"));
    style::setTextColor(problem_, style::warningColor());
    problem_->hide();
    layout->addWidget(problem_);

    place_ = new QWidget(this);
    auto* placeRow = new QHBoxLayout(place_);
    placeRow->setContentsMargins(0, 0, 0, 0);
    placeRow->setSpacing(style::kRowSpacing);
    const auto field = [this, placeRow](const QString& title, const char* name) {
        placeRow->addWidget(style::makeLabel(title, style::captionFont(), place_));
        auto* edit = new QLineEdit(place_);
        edit->setObjectName(QString::fromLatin1(name));
        edit->setFont(style::captionFont());
        edit->setPlaceholderText(QStringLiteral("0.0"));
        connect(edit, &QLineEdit::editingFinished, this, [this] { takeLocation(); });
        placeRow->addWidget(edit, 1);
        return edit;
    };
    latitude_ = field(QStringLiteral("Широта"), "latitude");
    longitude_ = field(QStringLiteral("Долгота"), "longitude");
    layout->addWidget(place_);

    night_ = new ToggleRow(QStringLiteral("Тёплый цвет ночью (4000 K)"), this);
    night_->setObjectName(QStringLiteral("nightColor"));
    night_->setOnToggled([this](bool on) {
        NightColor night = context_.model.adaptive().nightColor();
        night.on = on;
        context_.model.adaptive().setNightColor(night);
    });
    layout->addWidget(night_);

    displaysLayout_ = new QVBoxLayout;
    displaysLayout_->setContentsMargins(0, 0, 0, 0);
    displaysLayout_->setSpacing(style::kRowSpacing);
    layout->addLayout(displaysLayout_);
    updateValues();
}

void AdaptiveSection::choose(int index) {
    if (index < 0 || index >= static_cast<int>(kChoices.size())) return;
    const Choice& choice = kChoices[static_cast<std::size_t>(index)];
    if (choice.mode == AdaptiveMode::schedule) takeLocation();
    const bool refused = context_.model.adaptive().setMode(choice.mode).has_value();
    wantsSun_ = refused && choice.mode == AdaptiveMode::schedule;
    problem_->setText(refused ? QString::fromUtf8(choice.refusal) : QString());
    problem_->setVisible(refused);
    updateValues();
}

void AdaptiveSection::takeLocation() {
    const auto latitude = typedNumber(latitude_);
    const auto longitude = typedNumber(longitude_);
    if (!latitude || !longitude) return;
    AdaptiveBrightness& adaptive = context_.model.adaptive();
    adaptive.setLocation({*latitude, *longitude});
    // The sun, chosen before the place was known, is taken now.
    if (wantsSun_ && adaptive.location()) {
        wantsSun_ = false;
        problem_->hide();
        (void)adaptive.setMode(AdaptiveMode::schedule);
        updateValues();
    }
}

void AdaptiveSection::rebuildDisplayRows() {
    std::vector<DisplayID> wanted;
    std::vector<QString> names;
    for (const DisplayInfo& d : context_.model.displays().get()) {
        if (!d.isOnline || d.isBuiltin || d.isVirtual) continue;
        wanted.push_back(d.id);
        names.push_back(QString::fromStdString(d.name));
    }
    if (wanted == rowDisplays_) return;
    for (ToggleRow* row : displayRows_)
        delete row;
    displayRows_.clear();
    rowDisplays_ = wanted;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        auto* row = new ToggleRow(names[i], this);
        row->setObjectName(QStringLiteral("adaptiveDisplay%1").arg(wanted[i]));
        row->setOnToggled([this, id = wanted[i]](bool on) {
            context_.model.adaptive().setParticipating(id, on);
        });
        displaysLayout_->addWidget(row);
        displayRows_.push_back(row);
    }
}

void AdaptiveSection::updateValues() {
    const AdaptiveBrightness& adaptive = context_.model.adaptive();
    const Capabilities capabilities = context_.model.capabilities();
    {
        const QSignalBlocker blocker(mode_);
        for (std::size_t i = 0; i < kChoices.size(); ++i) {
            if (kChoices[i].mode == adaptive.mode()) mode_->setCurrentIndex(static_cast<int>(i));
        }
    }
    // What this machine lacks is not offered.
    if (auto* items = qobject_cast<QStandardItemModel*>(mode_->model())) {
        for (std::size_t i = 0; i < kChoices.size(); ++i) {
            bool offered = true;
            if (kChoices[i].mode == AdaptiveMode::sensor) offered = capabilities.ambientLight;
            if (kChoices[i].mode == AdaptiveMode::sync) offered = capabilities.backlight;
            if (QStandardItem* item = items->item(static_cast<int>(i))) item->setEnabled(offered);
        }
    }
    const bool on = adaptive.mode() != AdaptiveMode::off;
    place_->setVisible(adaptive.mode() == AdaptiveMode::schedule || wantsSun_);
    if (auto place = adaptive.location();
        place && !latitude_->hasFocus() && !longitude_->hasFocus()) {
        latitude_->setText(QString::number(place->latitude));
        longitude_->setText(QString::number(place->longitude));
    }
    night_->setVisible(adaptive.mode() == AdaptiveMode::schedule && capabilities.gamma);
    night_->setChecked(adaptive.nightColor().on);
    rebuildDisplayRows();
    for (std::size_t i = 0; i < displayRows_.size(); ++i) {
        displayRows_[i]->setVisible(on);
        displayRows_[i]->setChecked(adaptive.participates(rowDisplays_[i]));
    }
}

}  // namespace lumora::ui
