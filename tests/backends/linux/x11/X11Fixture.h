#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Witness.h"
#include "XorgServer.h"

namespace lumora::lx::test {

// A fresh dummy Xorg per test (DUMMY0 lit at 2048x1536 and primary, the other outputs dark)
// and a witness connected to it.
class X11Fixture : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string whyNot;
        server = XorgServer::start(whyNot);
        if (!server) GTEST_SKIP() << whyNot;
        witness = std::make_unique<Witness>(server->display());
        ASSERT_TRUE(witness->connected());
    }

    [[nodiscard]] const std::string& display() const { return server->display(); }

    // Runs an X client against the server; it must succeed.
    std::string run(const std::vector<std::string>& argv) {
        const ToolResult result = runTool(argv, display());
        EXPECT_EQ(result.exitCode, 0) << argv[0] << " " << (argv.size() > 1 ? argv[1] : "");
        return result.output;
    }

    // Lights a dark dummy output. It reports itself connected, with the driver's whole mode
    // list, from the next probe on (a plain query).
    void light(const std::string& output, const std::string& mode,
               const std::vector<std::string>& where) {
        run({"xrandr", "--addmode", output, mode});
        std::vector<std::string> argv = {"xrandr", "--output", output, "--mode", mode};
        argv.insert(argv.end(), where.begin(), where.end());
        run(argv);
        run({"xrandr"});
    }

    std::unique_ptr<XorgServer> server;
    std::unique_ptr<Witness> witness;
};

}  // namespace lumora::lx::test
