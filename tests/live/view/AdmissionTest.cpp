// SPDX-License-Identifier: Apache-2.0
// Who is let in.
#include <veskar-host/InputError.h>

#include "live/support/SecretFile.h"
#include "live/view/Admission.h"
#include "support/TemporaryDirectory.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using Verdict = Admission::Verdict;

const std::string token = "0123456789abcdef";

TEST(Admission, TakesAddressesAndLocalhost) {
    const Admission admission("", {});
    for (const char* host : {"127.0.0.1:8650", "127.0.0.1", "localhost:1", "LocalHost",
                             "[::1]:8650", "[fe80::1]", "192.168.1.7:8650"}) {
        EXPECT_EQ(admission.judge(host, ""), Verdict::Granted) << host;
    }
}

TEST(Admission, RefusesNamesThatAnyNameServerCanMakeUp) {
    const Admission admission("", {"gate.local"});
    for (const char* host :
         {"", "evil.example", "evil.example:8650", "localhost.evil.example",
          "127.0.0.1.evil.example", "[evil]", "[", "gate.local.evil.example", "0x7f.1"}) {
        EXPECT_EQ(admission.judge(host, ""), Verdict::WrongHost) << host;
    }
    EXPECT_EQ(admission.judge("gate.local:8650", ""), Verdict::Granted);
    EXPECT_EQ(admission.judge("Gate.Local", ""), Verdict::Granted);
}

TEST(Admission, TakesTheTokenAndNothingElse) {
    const Admission admission(token, {});
    EXPECT_EQ(admission.judge("127.0.0.1", token), Verdict::Granted);
    for (const std::string& wrong :
         {std::string(), token.substr(1), token + "0", token.substr(0, 15) + "F",
          std::string(16, '\0'), std::string(300, '0')}) {
        EXPECT_EQ(admission.judge("127.0.0.1", wrong), Verdict::NoToken) << wrong;
    }
    EXPECT_EQ(admission.judge("evil.example", token), Verdict::WrongHost);
}

TEST(Admission, ReadsTheTokenOfAFileThatIsSecret) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string file = VeskarTest::secretFile(directory / "token", token, "more");
    EXPECT_EQ(Admission::readToken(file), token);
    VeskarTest::secretFile(file, "short", "");
    try {
        Admission::readToken(file);
        FAIL();
    } catch (const Host::InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("has 5 bytes, not 16 at least"));
    }
    EXPECT_THROW(Admission::readToken(directory / "missing"), Host::InputError);
}

}  // namespace
}  // namespace Veskar::Live
