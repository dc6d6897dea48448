#include <unistd.h>

#include <QApplication>
#include <QCoreApplication>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Application.h"
#include "CommandLine.h"
#include "CommandOutcome.h"
#include "FrontEnd.h"
#include "ListCommand.h"
#include "runtime/AppPaths.h"
#include "runtime/QtSession.h"

namespace {

using namespace lumora;

// Exit status for unusable arguments, world files or platforms.
constexpr int kUsageError = 2;

std::optional<std::string> environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

}  // namespace

int main(int argc, char** argv) {
    const auto cli = app::parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    const auto paths = app::AppPaths::fromEnvironment(environmentVariable, getuid());
    if (cli.help) {
        std::cout << app::helpText();
        return 0;
    }
    if (cli.version) {
        std::cout << "Lumora " << app::QtSession(paths, {}).version() << "\n";
        return 0;
    }
    if (!cli.error.empty()) {
        std::cerr << "lumora: " << cli.error << "\n" << app::kUsage << "\n";
        return kUsageError;
    }

    // A command for the agent of this user goes straight to it: nothing else needs building.
    const bool showsPanelOnly = cli.preview || cli.renderPanel;
    if (cli.url && !showsPanelOnly) {
        if (auto status = app::handOverCommand(paths.instanceSocket, *cli.url, cli.printStatus,
                                               std::cout, std::cerr)) {
            return *status;
        }
    }

    if (cli.list) {
        // The scheduler of the listing needs Qt's application object.
        QCoreApplication qt(argc, argv);
        return app::listDisplays(cli);
    }

    const app::FrontEnd frontEnd = app::chooseFrontEnd(cli, environmentVariable);
    if (frontEnd.platform)
        qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(*frontEnd.platform));
    std::unique_ptr<QCoreApplication> qt;
    if (frontEnd.widgets) {
        auto gui = std::make_unique<QApplication>(argc, argv);
        // The panel and the preview come and go; the agent stays until it is told to quit.
        gui->setQuitOnLastWindowClosed(cli.preview);
        qt = std::move(gui);
    } else {
        qt = std::make_unique<QCoreApplication>(argc, argv);
    }
    int status = 0;
    {
        app::Application application(cli, frontEnd);
        status = application.run();
    }
    return status;
}
