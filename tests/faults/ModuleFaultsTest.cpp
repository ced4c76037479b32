// Strategy modules that go wrong while they are loaded: they harm themselves alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "EventStrategy/ov.strategy.runner/IRunner.h"
#include "EventStrategy/ov.strategy.runner/IRunnerFactory.h"
#include "EventStrategy/ov.strategy.runner/IRunnerSpi.h"
#include "host/InputError.h"
#include "platform/EmbeddedPlatform.h"
#include "platform/core/ModuleTrial.h"
#include "shared/InterfaceVersion.h"
#include "shared/TextCodec.h"
#include "tests/host/Program.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string hereTheyHave() { return "here they have version " + std::to_string(kInterfaceVersion); }

class BadModule : public testing::Test {
 protected:
  test::ProgramResult run(const std::string& module) const {
    return test::runProgram(
        {"run", "-s", test::testModule(module), "-b", "A.X=" + bars_, "--report", report_});
  }

  /// The command refuses the module in one line that has all of `parts`; nothing was run.
  void expectRefused(const std::string& module, const std::vector<std::string>& parts) const {
    const auto result = run(module);
    EXPECT_EQ(result.exitCode, kExitBadInput) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith("orvane: --strategy: \"" + test::testModule(module) + "\""));
    for (const std::string& part : parts) EXPECT_THAT(result.err, HasSubstr(part));
    EXPECT_FALSE(std::filesystem::exists(report_));
  }

  const test::TempFolder folder_;
  const std::string bars_ = folder_.write("bars.csv", test::barsCsv());
  const std::string report_ = folder_ / "report";
};

TEST_F(BadModule, shouldBeRefusedWithItsTextWhenItThrowsWhileItIsLoaded) {
  expectRefused("throwing_module", {"threw while it was loaded: no settings"});
}

TEST_F(BadModule, shouldBeRefusedWithItsLastWordsWhenItEndsTheProcessWhileItIsLoaded) {
  expectRefused("exiting_module",
                {"ended the process while it was loaded, exit code", "the licence has run out"});
}

TEST_F(BadModule, shouldBeRefusedWithTheReasonWhenItCrashesWhileItIsLoaded) {
  expectRefused("crashing_module", {"crashed while it was loaded, Aborted"});
}

TEST_F(BadModule, shouldBeRefusedWithTheNameOfTheSymbolThatItLacks) {
  expectRefused("lacking_module", {"is not a strategy module", "functionOfAnotherLibrary"});
}

TEST_F(BadModule, shouldBeRefusedWithBothNumbersWhenItWasBuiltForOtherInterfaces) {
  expectRefused("foreign_module",
                {"was built for version 99 of the interfaces, and " + hereTheyHave()});
}

TEST_F(BadModule, shouldBeNoneWhenItExportsOnlyWhatAModuleMust) {
  const auto result = run("plain_module");
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
}

TEST_F(BadModule, shouldBeTriedOnceHoweverManyRunnersUseIt) {
  const std::string loads = folder_ / "loads";
  const std::string runner = R"("strategy": ")" + test::testModule("plain_module") + "\"";
  const std::string config =
      folder_.write("run.json", R"({"runners": [{"name": "a", )" + runner + R"(}, {"name": "b", )" +
                                    runner + R"(}, {"name": "c", )" + runner +
                                    R"(}], "bars": {"code": "A.X", "file": "bars.csv"}})");
  setenv("ORVANE_TEST_LOADS", loads.c_str(), 1);
  const auto result = test::runProgram({"run", config});
  unsetenv("ORVANE_TEST_LOADS");
  EXPECT_EQ(result.exitCode, kExitSuccess) << result.err;
  // Once in the second process, and once in the one that runs it.
  EXPECT_EQ(test::readFile(loads), "xx");
}

TEST(ModuleTrial, shouldTellWhatIsWrongAndLeaveTheCallerUnharmed) {
  EXPECT_EQ(tryModule(test::testModule("throwing_module")),
            "threw while it was loaded: no settings");
  EXPECT_THAT(tryModule(test::testModule("exiting_module")), StartsWith("ended the process"));
  EXPECT_THAT(tryModule(test::testModule("crashing_module")), StartsWith("crashed"));
  EXPECT_THAT(tryModule(test::testModule("foreign_module")),
              StartsWith("was built for version 99"));
  EXPECT_THAT(tryModule("/nowhere/my.so"), HasSubstr("/nowhere/my.so"));
  EXPECT_EQ(tryModule(test::testModule("plain_module")), "");
}

/// Keeps the last status that a runner told.
class LastStatus final : public IRunnerSpi {
 public:
  void onStatus(int status, const std::string& message) override {
    const std::lock_guard lock(mutex_);
    last_ = std::to_string(status) + " " + gbkToUtf8(message);
  }
  void onNotify(const QJsonObject&) override {}
  void onEnvs(const std::map<std::string, std::string>&) override {}
  void onEnvItems(const std::list<EnvItem>&) override {}
  std::string last() const {
    const std::lock_guard lock(mutex_);
    return last_;
  }

 private:
  mutable std::mutex mutex_;
  std::string last_;
};

/// What a runner of a host of its own tells of the module.
std::string statusAfterStartOf(const std::string& module) {
  EmbeddedPlatform platform;
  installPlatform(&platform);
  const auto spi = std::make_shared<LastStatus>();
  auto runner = IRunnerFactory::instance()->createRunner("r", 0);
  runner->setSpi(spi);
  runner->setStrategyPath(test::testModule(module));
  runner->start({});
  platform.drain();
  const std::string status = spi->last();
  IRunnerFactory::instance()->destroyRunner("r");
  runner.reset();
  platform.drain();
  installPlatform(nullptr);
  return status;
}

TEST(ModuleLoader, shouldEndTheStartAsAnErrorWithBothNumbersWhenTheModuleIsForOtherInterfaces) {
  const std::string status = statusAfterStartOf("foreign_module");
  EXPECT_THAT(status, StartsWith("1 加载" + test::testModule("foreign_module") + "失败,"));
  EXPECT_THAT(status,
              HasSubstr("was built for version 99 of the interfaces, and " + hereTheyHave()));
}

TEST(ModuleLoader, shouldStartAModuleThatSaysNothingOfItsVersion) {
  EXPECT_EQ(statusAfterStartOf("plain_module"), "3 ");
}

TEST(ModuleLoader, shouldEndTheStartAsAnErrorWhenTheModuleLacksASymbol) {
  EXPECT_THAT(statusAfterStartOf("lacking_module"), HasSubstr("functionOfAnotherLibrary"));
}

}  // namespace
}  // namespace orvane
