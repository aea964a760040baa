// The Linux bus: both ways, every error, a hang, an adapter that goes and returns, many buses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <cstdio>
#include <filesystem>
#include <future>

#include "agent/base/Error.h"
#include "agent/commands/CommandLine.h"
#include "agent/slots/Source.h"
#include "agent/transport/LinuxAdapter.h"
#include "agent/transport/LinuxTransport.h"
#include "host/kex/base/Format.h"
#include "tests/linux/FakeAdapter.h"
#include "tests/unit/agent_transport.h"

namespace {

using namespace agentTest;
using namespace linuxTest;
using Agent::LinuxBus;
using Agent::LinuxTransport;
using Agent::Source;
using testing::_;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::ThrowsMessage;
using testing::UnorderedElementsAreArray;

constexpr unsigned long kEachWay[] = {kSmbusBlocks | I2C_FUNC_I2C, I2C_FUNC_I2C};

class LinuxBusTest : public testing::Test {
 protected:
  FakeAdapter& adapter(Behaviour const& behaviour = {}) {
    return *adapters_.emplace_back(std::make_unique<FakeAdapter>(
        bed_.get(), static_cast<unsigned>(adapters_.size()) + 7, behaviour));
  }
  std::string answer(LinuxTransport& transport, Smbus::Transaction const& transaction) {
    transport.start(transaction, 1, answers_);
    loop_.run_one();
    return answers_.texts.back();
  }
  /// What a new transport of bus 7 answers.
  std::string answer(Smbus::Transaction const& transaction) {
    LinuxTransport transport(LinuxBus("7"), post());
    return answer(transport, transaction);
  }
  /// Where the files stand that stand for the machine's.
  std::filesystem::path root() const {
    std::unique_ptr<gchar, decltype(&g_free)> const name(umockdev_testbed_get_root_dir(bed_.get()),
                                                         &g_free);
    return name.get();
  }
  Agent::Post post() {
    return [this](std::function<void()> work) { asio::post(loop_, std::move(work)); };
  }

  Owned<UMockdevTestbed> bed_{umockdev_testbed_new()};
  std::vector<std::unique_ptr<FakeAdapter>> adapters_;
  /// Stands for the run loop; `run_one` waits for the next piece of work that is posted.
  asio::io_context loop_;
  asio::executor_work_guard<asio::io_context::executor_type> guard_ = make_work_guard(loop_);
  Answers answers_;
};

TEST_F(LinuxBusTest, AsksForTheSameInBothWays) {
  // 0x07 "EMERSON"; 16 bytes of the image from 4 on, which are followed by 0xFF.
  std::string const mfrId = "1 07454D4552534F4E";
  std::string const fru = "1 1005060708090A0B0C0D0E0F10FFFFFFFF";
  Smbus::Transaction cut = fruRead(4);
  cut.readLength = 5;
  FakeAdapter& fake = adapter();
  for (unsigned long const functions : kEachWay) {
    fake.behaviourIs({.functions = functions});
    EXPECT_EQ(answer(mfrIdRead()), mfrId);
    EXPECT_EQ(answer(fruRead(4)), fru);
    EXPECT_EQ(answer(cut), "1 1005060708");
  }
  EXPECT_THAT(fake.transfers(),
              ElementsAre("smbus read 99", "smbus call 7 B00104", "smbus call 7 B00104",
                          "58<99 58>33", "58<B00104 58>17", "58<B00104 58>5"));
}

TEST_F(LinuxBusTest, KeepsErrorsApart) {
  struct {
    Behaviour behaviour;
    char const* error;
    std::string text;
  } const rows[] = {
      {{.slaveError = EBUSY}, "addressHeld", "the address is held by a kernel driver (EBUSY)"},
      {{.slaveError = ENODEV}, "busGone", "the adapter has gone (ENODEV)"},
      {{.slaveError = EINVAL}, "other", "Invalid argument (EINVAL)"},
      {{.transferError = ENXIO}, "noAcknowledge", "no acknowledge (ENXIO)"},
      {{.transferError = EREMOTEIO}, "noAcknowledge", "no acknowledge (EREMOTEIO)"},
      {{.transferError = ETIMEDOUT}, "timeout", "timeout (ETIMEDOUT)"},
      {{.transferError = EAGAIN}, "arbitrationLost", "arbitration lost (EAGAIN)"},
      {{.transferError = EBUSY}, "busBusy", "the bus is busy (EBUSY)"},
      {{.transferError = EPROTO}, "badCount", "bad count byte (EPROTO)"},
      {{.transferError = EBADMSG}, "other", "wrong packet error code (EBADMSG)"},
      {{.transferError = EOPNOTSUPP}, "unsupported", "unsupported by the adapter (EOPNOTSUPP)"},
      {{.transferError = ESHUTDOWN}, "other", "the adapter is suspended (ESHUTDOWN)"},
      {{.transferError = EIO}, "other", "Input/output error (EIO)"},
      {{.count = 33}, "badCount", "bad count byte: 33, where 32 is the most"},
      {{.count = 255}, "badCount", "bad count byte: 255, where 32 is the most"},
  };
  FakeAdapter& fake = adapter();
  for (unsigned long const functions : kEachWay) {
    for (auto [behaviour, error, text] : rows) {
      behaviour.functions = functions;
      fake.behaviourIs(behaviour);
      EXPECT_EQ(answer(mfrIdRead()), "1 i2c-7, device 0x58: " + text);
      EXPECT_EQ(answers_.errors.back(), error) << text;
    }
  }
  fake.behaviourIs({.functions = I2C_FUNC_I2C, .messages = 1});
  EXPECT_EQ(answer(mfrIdRead()), "1 i2c-7, device 0x58: the adapter carried out 1 of 2 messages");
  fake.behaviourIs({.count = 0});
  EXPECT_EQ(answer(mfrIdRead()), "1 00");
}

TEST_F(LinuxBusTest, RefusesAdaptersThatCannotServe) {
  adapter({.functions = I2C_FUNC_SMBUS_READ_BLOCK_DATA | I2C_FUNC_SMBUS_EMUL});
  adapter({.functions = 0});
  std::string const reasons[] = {
      "the adapter cannot serve: it lacks SMBus block process call, plain I2C",
      "the adapter cannot serve: it lacks SMBus block read, SMBus block process call, plain I2C",
      "cannot open /dev/i2c-9: No such file or directory; there are i2c-7 \"fake i2c-7\", i2c-8 "
      "\"fake i2c-8\"; modprobe i2c-dev makes their nodes"};
  for (unsigned bus = 7; std::string const& reason : reasons) {
    std::string const text = "i2c-" + std::to_string(bus) + ": " + reason;
    Source const source("i2c:" + std::to_string(bus));
    EXPECT_THAT([&] { source.open({.post = post()}); }, ThrowsMessage<Agent::Failure>(text));
    // One that may come yet says the same when it is asked.
    auto const opening = source.open({.post = post(), .mayBeMissing = true});
    opening.transport->start(mfrIdRead(), 1, answers_);
    loop_.run_one();
    EXPECT_EQ(answers_.texts.back(), "1 " + text);
    ++bus;
  }
  EXPECT_THAT(answers_.errors, ElementsAre("unsupported", "unsupported", "busGone"));

  // One that is there and cannot be opened has not gone.
  std::filesystem::path const node = root() / "dev" / "i2c-7";
  std::filesystem::remove(node);
  std::filesystem::create_directory(node);
  EXPECT_EQ(answer(mfrIdRead()), "1 i2c-7: cannot open /dev/i2c-7: Is a directory");
  EXPECT_EQ(answers_.errors.back(), "other");
}

TEST_F(LinuxBusTest, AHangDelaysNobodyElse) {
  FakeAdapter& hung = adapter({.hangs = true});
  adapter();
  LinuxTransport transport(LinuxBus("7"), post());
  transport.start(mfrIdRead(), 1, answers_);
  hung.awaitHang();
  LinuxTransport other(LinuxBus("8"), post());
  other.start(fruRead(4), 0, answers_);
  loop_.run_one();
  // The second one waits for the first, which the kernel keeps, and is never sent.
  pass(1);
  transport.start(fruRead(0), 2, answers_);
  pass(1);
  std::string const device = "i2c-7, device 0x58: the kernel did not ";
  std::string const timeout = " within the bus timeout of 1000 ms";
  EXPECT_THAT(
      answers_.texts,
      ElementsAre(StartsWith("0 100506"), "1 " + device + "return" + timeout,
                  "2 " + device + "give the bus back from an earlier transaction" + timeout));
  EXPECT_THAT(answers_.errors, ElementsAre("", "timeout", "busBusy"));

  // Once the kernel returns the bus goes on, and the late answer is nobody's.
  transport.start(fruRead(4), 3, answers_);
  hung.behaviourIs({});
  hung.release();
  loop_.run_one();
  loop_.run_one();
  EXPECT_THAT(answers_.texts, ElementsAre(_, _, _, StartsWith("3 100506")));
  EXPECT_THAT(hung.transfers(), ElementsAre("smbus read 99", "smbus call 7 B00104"));
}

TEST_F(LinuxBusTest, EndsWhileTheKernelKeepsATransaction) {
  FakeAdapter& hung = adapter({.hangs = true});
  {
    LinuxTransport transport(LinuxBus("7"), post());
    transport.start(mfrIdRead(), 1, answers_);
    hung.awaitHang();
  }
  hung.release();
  hung.behaviourIs({});
  answer(mfrIdRead());
  EXPECT_THAT(answers_.texts, ElementsAre("1 07454D4552534F4E"));
}

TEST_F(LinuxBusTest, AnswersPostedBeforeTheEndAreDropped) {
  adapter();
  std::promise<std::function<void()>> posted;
  std::function<void()> answer;
  {
    LinuxTransport transport(LinuxBus("7"), [&](auto work) { posted.set_value(std::move(work)); });
    transport.start(mfrIdRead(), 1, answers_);
    answer = posted.get_future().get();
  }
  answer();
  EXPECT_THAT(answers_.texts, IsEmpty());
}

TEST_F(LinuxBusTest, AnAdapterThatReturnsIsFoundAgain) {
  FakeAdapter& fake = adapter();
  LinuxTransport transport(LinuxBus("7"), post());
  std::string const node = root() / "dev" / "i2c-7";
  std::string const away = node + "-away";
  EXPECT_EQ(answer(transport, mfrIdRead()), "1 07454D4552534F4E");
  // The adapter is unplugged under the open file, then its node is gone as well.
  fake.behaviourIs({.transferError = ENODEV});
  EXPECT_THAT(answer(transport, mfrIdRead()), HasSubstr("the adapter has gone (ENODEV)"));
  ASSERT_EQ(std::rename(node.c_str(), away.c_str()), 0);
  EXPECT_EQ(
      answer(transport, mfrIdRead()),
      "1 i2c-7: cannot open /dev/i2c-7: No such file or directory; modprobe i2c-dev makes the "
      "nodes");
  EXPECT_THAT(answers_.errors, ElementsAre("", "busGone", "busGone"));
  ASSERT_EQ(std::rename(away.c_str(), node.c_str()), 0);
  fake.behaviourIs({.functions = I2C_FUNC_I2C});
  EXPECT_EQ(answer(transport, mfrIdRead()), "1 07454D4552534F4E");
}

TEST_F(LinuxBusTest, BusesAreFoundAnewByNameAndPath) {
  adapter(), adapter();
  FakeAdapter& left = *adapters_[0];
  FakeAdapter& right = *adapters_[1];
  struct {
    char const* target;
    unsigned number;
  } const rows[] = {
      {"8", 8},
      {"/dev/i2c-8", 8},
      {"/sys/devices/i2c-8", 8},
      {"/sys/bus/i2c/devices/i2c-7", 7},
      {"name=fake i2c-8", 8},
  };
  for (auto const& [target, number] : rows) {
    EXPECT_EQ(LinuxBus(target).node().number, number) << target;
    EXPECT_EQ(LinuxBus(target).identity(), "i2c-" + std::to_string(number)) << target;
  }
  EXPECT_THAT(
      [] {
        Agent::parseSources({"i2c:7", "i2c:name=fake i2c-7"});
      },
      ThrowsMessage<Agent::UsageError>(HasSubstr("i2c-7 is named twice")));

  // The name goes over to the other adapter, as when numbers change.
  LinuxTransport byName(LinuxBus("name=psu"), post());
  EXPECT_EQ(answer(byName, mfrIdRead()),
            "1 i2c:name=psu: no i2c adapter is called so; there are i2c-7 \"fake i2c-7\", i2c-8 "
            "\"fake i2c-8\"; modprobe i2c-dev makes their nodes");
  left.nameIs("psu");
  answer(byName, mfrIdRead());
  left.nameIs("other"), right.nameIs("psu");
  answer(byName, fruRead(0));
  EXPECT_THAT(left.transfers(), ElementsAre("smbus read 99"));
  EXPECT_THAT(right.transfers(), ElementsAre("smbus call 7 B00100"));
  left.nameIs("psu");
  EXPECT_EQ(answer(byName, mfrIdRead()),
            "1 i2c:name=psu: several are called so: i2c-7 \"psu\", i2c-8 \"psu\"");

  LinuxTransport byPath(LinuxBus("/sys/bus/i2c/devices/i2c-7"), post());
  EXPECT_EQ(answer(byPath, mfrIdRead()), "1 07454D4552534F4E");
  LinuxTransport missing(LinuxBus("/nowhere/i2c-9"), post());
  EXPECT_THAT(answer(missing, mfrIdRead()),
              StartsWith("1 i2c:/nowhere/i2c-9: No such file or directory; there are i2c-7"));
  EXPECT_THAT(answers_.errors, ElementsAre("busGone", "", "", "busGone", "", "busGone"));
  for (char const* const target : {"/sys/devices", "/dev/i2c-"}) {
    EXPECT_THROW(LinuxBus(target).node(), Agent::BusFailure) << target;
  }
  for (char const* const wrong :
       {"", "-1", "07", "7 ", "1048576", "99999999999999999999", "name=", "dev", "name"}) {
    EXPECT_THROW(LinuxBus{wrong}, Agent::UsageError) << wrong;
  }
}

TEST_F(LinuxBusTest, SixteenBusesAtOnceKeepTheirAnswersApart) {
  std::vector<std::unique_ptr<LinuxTransport>> transports;
  std::vector<std::string> expected;
  for (Kex::U8 i = 0; i < 16; ++i) {
    adapter({.functions = kEachWay[i % 2]});
    transports.push_back(std::make_unique<LinuxTransport>(LinuxBus(std::to_string(i + 7)), post()));
    Smbus::Transaction firstByte = fruRead(i);
    firstByte.readLength = 2;
    transports[i]->start(firstByte, i, answers_);
    expected.emplace_back(Kex::format("%u 10%02X", i, i + 1).charPtr());
  }
  for (auto left = expected.size(); left != 0; --left) {
    loop_.run_one();
  }
  EXPECT_THAT(answers_.texts, UnorderedElementsAreArray(expected));
}

TEST_F(LinuxBusTest, AnIndependentProgramSeesTheSameSupply) {
  adapter({.functions = kSmbusBlocks});
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> const program(
      popen("LD_PRELOAD=libumockdev-preload.so.0 i2cget -y 7 0x58 0x99 s", "re"), &pclose);
  std::array<char, 200> line{};
  ASSERT_NE(std::fgets(line.data(), line.size(), program.get()), nullptr);
  EXPECT_STREQ(line.data(), "0x45 0x4d 0x45 0x52 0x53 0x4f 0x4e\n");
}

TEST_F(LinuxBusTest, TheDoctorTellsWhatCanBeDone) {
  FakeAdapter& fake = adapter();
  auto const doctor = [](std::vector<char const*> const& sources) {
    std::vector<char const*> arguments{"psu-agent", "doctor"};
    arguments.insert(arguments.end(), sources.begin(), sources.end());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    auto const status = static_cast<int>(
        Agent::runCommandLine(static_cast<int>(arguments.size()), arguments.data()));
    return std::to_string(status) + " " + testing::internal::GetCapturedStdout() +
           testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(
      doctor({"i2c:/dev/i2c-7"}),
      "0 i2c-7: \"fake i2c-7\"; /sys/devices/i2c-7; functions 0x01008000, of use: SMBus block "
      "read, SMBus block process call; way: SMBus block calls; address 0x58: free, MFR_ID "
      "\"EMERSON\"; recognition can work\n");
  fake.behaviourIs({.transferError = ENXIO});
  EXPECT_THAT(doctor({"i2c:7"}), HasSubstr("free, no acknowledge; recognition can work\n"));
  fake.behaviourIs({.slaveError = EBUSY});
  EXPECT_THAT(doctor({"i2c:7"}), StartsWith("4 i2c-7: "));
  fake.behaviourIs({.functions = I2C_FUNC_SMBUS_READ_BLOCK_DATA});
  adapter({.functions = I2C_FUNC_I2C});
  EXPECT_THAT(doctor({}),
              testing::AllOf(StartsWith("4 i2c-7: "),
                             HasSubstr("way: none, it lacks SMBus block process call, plain I2C; "
                                       "address 0x58: free; recognition cannot work\ni2c-8: "),
                             HasSubstr("\"EMERSON\"; recognition can work\n")));
  EXPECT_THAT(doctor({"i2c:9"}), StartsWith("1 psu-agent: i2c-9: cannot open /dev/i2c-9: "));
  std::filesystem::remove(root() / "dev" / "i2c-7");
  EXPECT_THAT(doctor({}),
              StartsWith("1 i2c-7: \"fake i2c-7\"; /sys/devices/i2c-7; cannot open /dev/i2c-7: No "
                         "such file or directory; modprobe i2c-dev makes the nodes; recognition "
                         "cannot work\ni2c-8: "));
  EXPECT_EQ(doctor({"7"}), "2 psu-agent: doctor: 7 is no i2c:...; see psu-agent help doctor\n");
}

}  // namespace
