#include <unistd.h>

#include <QApplication>
#include <QCoreApplication>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AppDelegate.h"
#include "Application.h"
#include "CommandLine.h"
#include "FrontEnd.h"
#include "ListCommand.h"
#include "runtime/AppPaths.h"
#include "runtime/InstanceChannel.h"

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
    if (!cli.error.empty()) {
        std::cerr << "lumora: " << cli.error << "\n" << app::kUsage << "\n";
        return kUsageError;
    }

    // A URL for the agent of this user goes straight to it: nothing else needs building.
    const bool showsPanelOnly = cli.preview || cli.renderPanel;
    if (cli.url && !cli.list && !showsPanelOnly) {
        const auto paths = app::AppPaths::fromEnvironment(environmentVariable, getuid());
        if (auto done = app::InstanceChannel::handOver(paths.instanceSocket, *cli.url)) {
            if (*done) return 0;
            std::cerr << "lumora: the running Lumora did not carry out " << *cli.url << "\n";
            return app::AppDelegate::kHandOverFailed;
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
