#pragma once

// The model on the simulated machine, as tests/core/model builds it, with the real menu panel
// on top, drawn on Qt's offscreen platform.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QStringList>
#include <QUrl>
#include <memory>
#include <vector>

#include "core/model/ModelScenario.h"
#include "ui/DisplayCard.h"
#include "ui/ElidedLabel.h"
#include "ui/MenuPanel.h"
#include "ui/PanelText.h"
#include "ui/UiContext.h"

// Readable failure messages for Qt strings.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lumora::test {

// One QApplication for the whole program; Qt allows no second one.
inline QApplication& qtApp() {
    static int argc = 1;
    static char name[] = "test_ui";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}

// A session whose start-at-login switch works, and sometimes refuses.
class LoginSession final : public Session {
  public:
    std::string version() const override { return "0.1.0"; }
    std::filesystem::path statusFile() const override { return "/nonexistent/status.json"; }
    bool launchAgentInstalled() const override { return false; }
    bool loginItemEnabled() const override { return enabled; }
    bool setLoginItemEnabled(bool on) override {
        ++switches;
        if (refuse) return false;
        enabled = on;
        return true;
    }

    bool enabled = false;
    bool refuse = false;
    int switches = 0;
};

class UiScenario : public ModelScenario {
  protected:
    static void SetUpTestSuite() { (void)qtApp(); }

    // The panel over the running model; made on first use.
    ui::MenuPanel& panel() {
        if (!panel_) {
            ui::UiContext context{*model,
                                  *displays,
                                  login,
                                  dir.path() / "Lumora.log",
                                  [this] { ++quits; },
                                  [this] { ++prompts; },
                                  [this](const QUrl& url) { opened.push_back(url); }};
            panel_ = std::make_unique<ui::MenuPanel>(std::move(context));
            panel_->setAvailableHeight(kTallScreen);
        }
        return *panel_;
    }

    // The model started on `world` (the default laptop and two monitors when none is given),
    // and the panel caught up with it.
    void startOn(sim::World world = fixtureWorld("laptopAndExternal.json"), bool events = false) {
        boot(std::move(world), events);
        model->start();
        settle(kSettle);
    }

    // Virtual time passes, then the panel catches up with the model.
    void settle(double seconds = 0) {
        if (seconds > 0) clock.advance(seconds);
        for (int round = 0; round < 3; ++round) {
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    static QString nameOf(const ui::DisplayCard& card) {
        auto* label = card.findChild<ui::ElidedLabel*>(QStringLiteral("displayName"));
        return label ? label->fullText() : QString();
    }

    static QStringList badgesOf(const QWidget& widget) {
        QStringList texts;
        for (QLabel* badge : widget.findChildren<QLabel*>(QStringLiteral("badge")))
            texts << badge->text();
        return texts;
    }

    // The entries of a menu as shown, submenus by their titles; separators are left out.
    static QStringList entries(const QMenu& menu) {
        QStringList texts;
        for (QAction* action : menu.actions())
            if (!action->isSeparator()) texts << action->text();
        return texts;
    }
    static QAction* entry(const QMenu& menu, const QString& text) {
        for (QAction* action : menu.actions())
            if (action->text() == text) return action;
        return nullptr;
    }
    static QMenu* submenu(const QMenu& menu, const QString& title) {
        QAction* action = entry(menu, title);
        return action ? action->menu() : nullptr;
    }

    // Tall enough that the default world's panel fits without scrolling.
    static constexpr int kTallScreen = 2000;

    LoginSession login;
    std::vector<QUrl> opened;
    int quits = 0;
    int prompts = 0;
    std::unique_ptr<ui::MenuPanel> panel_;  // after the model: goes first
};

}  // namespace lumora::test
