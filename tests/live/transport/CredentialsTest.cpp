// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "live/transport/Credentials.h"
#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

using Veskar::Host::InputError;
using Veskar::Live::Credentials;

namespace {

class CredentialsTest : public testing::Test {
protected:
    std::string write(const std::string& text, unsigned permissions) const {
        std::string path = directory.file("credentials");
        std::ofstream(path) << text;
        std::filesystem::permissions(path, std::filesystem::perms{permissions});
        return path;
    }
    static std::string refusal(const std::string& path) {
        try {
            Credentials::read(path);
        } catch (const InputError& error) {
            return error.what();
        }
        return "none";
    }

    const VeskarTest::TemporaryDirectory directory;
};

}  // namespace

TEST_F(CredentialsTest, HasUserAndPasswordInTwoLines) {
    const Credentials credentials = Credentials::read(write("camera\nse cret\nmore\n", 0600));
    EXPECT_EQ(credentials.user, "camera");
    EXPECT_EQ(credentials.password, "se cret");
    EXPECT_EQ(Credentials::read(write("camera\r\nsecret\r\n", 0640)).password, "secret");
    EXPECT_EQ(Credentials::read(write("camera\nsecret", 0600)).password, "secret");
    EXPECT_EQ(Credentials::read(write("camera", 0600)).password, "");
}

TEST_F(CredentialsTest, AreRefusedWhenEveryUserCanHaveThem) {
    for (const unsigned permissions : {0604U, 0602U, 0644U}) {
        const std::string path = write("camera\nsecret\n", permissions);
        EXPECT_EQ(refusal(path), path + ": is open to every user; take that away with chmod o-rwx");
    }
}

TEST_F(CredentialsTest, AreRefusedWithoutAUserOrAFile) {
    const std::string path = write("\nsecret\n", 0600);
    EXPECT_EQ(refusal(path), path + ": has no user in its first line");
    EXPECT_EQ(refusal(directory.file("none")),
              directory.file("none") + ": No such file or directory");
}

TEST_F(CredentialsTest, MayBeHandedOverBySystemd) {
    write("camera\nsecret\n", 0400);
    const std::string named = "$CREDENTIALS_DIRECTORY/credentials";
    ::setenv("CREDENTIALS_DIRECTORY", directory.file("").c_str(), 1);
    EXPECT_EQ(Credentials::read(named).password, "secret");
    EXPECT_NO_THROW(Veskar::Live::checkSecret(named));
    EXPECT_EQ(Veskar::Live::secretPath("$CREDENTIALS_DIRECTORYS/a"), "$CREDENTIALS_DIRECTORYS/a");
    EXPECT_EQ(Veskar::Live::secretPath("$HOME/a"), "$HOME/a");
    ::unsetenv("CREDENTIALS_DIRECTORY");
    EXPECT_EQ(refusal(named), named + ": systemd hands no credentials to the program");
}
