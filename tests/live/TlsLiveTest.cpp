// TLS configured where administrators configure it, in an option file, against
// a private server started with a CA and certificates made for this run.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "access/General.h"
#include "orvmysql/orvmysql.h"
#include "support/ErrorCapture.h"
#include "support/ScopedEnv.h"
#include "tools/DevServer.h"

using namespace orvmysql;

namespace {

namespace fs = std::filesystem;

// The passwords hold ";", which the connection string cannot carry.
constexpr const char* kTlsPassword = "tls;pass=word;";
constexpr const char* kCertPassword = "cert;pass";

bool Succeeds(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

class TlsLive : public ::testing::Test {
 public:
  static void SetUpTestSuite() {
    const char* mariadbd = std::getenv("ORVMYSQL_MARIADBD");
    if (!fs::exists(mariadbd != nullptr ? mariadbd : "/usr/sbin/mariadbd")) {
      skip_reason_ = "no server binaries to start a private server with TLS (mariadb-server-core)";
      return;
    }
    if (!Succeeds("command -v openssl")) {
      skip_reason_ = "openssl is not installed (make deps installs it)";
      return;
    }
    char pattern[] = "/tmp/orvmysql-tls-XXXXXX";
    if (mkdtemp(pattern) == nullptr) throw std::runtime_error("cannot create a directory");
    dir_ = pattern;
    MakeCertificates();
    server_ = devkit::DevServer::AcquirePrivate({"--ssl-ca=" + File("ca.pem"),
                                                 "--ssl-cert=" + File("server.pem"),
                                                 "--ssl-key=" + File("server-key.pem")});
    devkit::AdminExecute(Address(), "CREATE USER 'tls_user'@'%' IDENTIFIED BY '" +
                                        GetQuotedString(kTlsPassword, false) + "' REQUIRE SSL");
    devkit::AdminExecute(Address(), "CREATE USER 'cert_user'@'%' IDENTIFIED BY '" +
                                        GetQuotedString(kCertPassword, false) + "' REQUIRE X509");

    const std::string verify = "[client]\nssl-ca=" + File("ca.pem") + "\nssl-verify-server-cert\n";
    Write("tls.cnf", verify);
    Write("tls-with-cert.cnf", verify + "[orvmysql]\nssl-cert=" + File("client.pem") +
                                   "\nssl-key=" + File("client-key.pem") + "\n");
    Write("stranger.cnf",
          "[client]\nssl-ca=" + File("stranger-ca.pem") + "\nssl-verify-server-cert\n");
  }

  static void TearDownTestSuite() {
    server_.reset();
    std::error_code ec;
    if (!dir_.empty()) fs::remove_all(dir_, ec);
  }

 protected:
  void SetUp() override {
    if (!skip_reason_.empty()) GTEST_SKIP() << skip_reason_;
  }

  static const devkit::ServerAddress& Address() { return server_->Address(); }
  static std::string File(const std::string& name) { return dir_ + "/" + name; }

  // A connection to the private server over TCP.
  static std::shared_ptr<IConnection> Connect(const char* user, const char* password) {
    return NewConnection(CDPConnector("127.0.0.1", "", user, password, Address().port));
  }

  static std::string TlsVersion(IConnection& connection) {
    return connection.ExecuteScalar(
        "SELECT VARIABLE_VALUE FROM information_schema.SESSION_STATUS "
        "WHERE VARIABLE_NAME = 'SSL_VERSION'",
        "");
  }

 private:
  static void Write(const std::string& name, const std::string& text) {
    std::ofstream(File(name)) << text;
  }

  static void MakeCertificates() {
    const std::string key = " -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes";
    const auto ca = [&](const std::string& name) {
      return Succeeds("openssl req -x509" + key + " -days 2 -subj /CN=" + name + " -keyout " +
                      File(name + "-key.pem") + " -out " + File(name + ".pem"));
    };
    const auto signed_by_ca = [&](const std::string& name, const std::string& cn,
                                  const std::string& extensions) {
      Write(name + ".ext", extensions);
      return Succeeds("openssl req" + key + " -subj /CN=" + cn + " -keyout " +
                      File(name + "-key.pem") + " -out " + File(name + ".csr")) &&
             Succeeds("openssl x509 -req -days 2 -in " + File(name + ".csr") + " -CA " +
                      File("ca.pem") + " -CAkey " + File("ca-key.pem") +
                      " -CAcreateserial -extfile " + File(name + ".ext") + " -out " +
                      File(name + ".pem"));
    };
    if (!ca("ca") || !ca("stranger-ca") ||
        !signed_by_ca("server", "localhost", "subjectAltName=IP:127.0.0.1,DNS:localhost\n") ||
        !signed_by_ca("client", "orvmysql-client", "extendedKeyUsage=clientAuth\n")) {
      throw std::runtime_error("openssl could not make the test certificates in " + dir_);
    }
  }

  static inline std::string skip_reason_;
  static inline std::string dir_;
  static inline std::unique_ptr<devkit::DevServer> server_;
};

TEST_F(TlsLive, AUserThatRequiresTlsConnectsWithTheOptionFileAndIsRefusedWithout) {
  {
    orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("tls.cnf").c_str());
    auto connection = Connect("tls_user", kTlsPassword);
    EXPECT_EQ(TlsVersion(*connection).rfind("TLSv1.", 0), 0u);
    EXPECT_NE(connection->ConnectionString().find(";PASSWORD=tls;pass=word;;PORT="),
              std::string::npos);
  }

  // Without the file the client speaks plain text, and the server refuses.
  const Error refused = orvtest::Raised([] { TlsVersion(*Connect("tls_user", kTlsPassword)); });
  EXPECT_EQ(refused.Number(), kErrConnectFailed);
  EXPECT_EQ(refused.NativeError(), 1045u);
  const std::string text = refused.what();
  EXPECT_NE(text.find("Access denied for user 'tls_user'"), std::string::npos) << text;
  EXPECT_NE(text.find("[server error 1045, SQLSTATE 28000]"), std::string::npos) << text;

  // A server certificate that the configured CA did not sign fails the handshake.
  orvtest::ScopedEnv stranger("ORVMYSQL_OPTION_FILE", File("stranger.cnf").c_str());
  const Error unverified = orvtest::Raised([] { TlsVersion(*Connect("tls_user", kTlsPassword)); });
  EXPECT_EQ(unverified.Number(), kErrConnectFailed);
  EXPECT_EQ(unverified.NativeError(), 2026u) << unverified.what();  // TLS connection error
}

TEST_F(TlsLive, AClientCertificateComesFromTheLibrarysOwnGroup) {
  {
    orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("tls-with-cert.cnf").c_str());
    EXPECT_EQ(TlsVersion(*Connect("cert_user", kCertPassword)).rfind("TLSv1.", 0), 0u);
  }
  orvtest::ScopedEnv file("ORVMYSQL_OPTION_FILE", File("tls.cnf").c_str());
  EXPECT_EQ(orvtest::Raised([] { TlsVersion(*Connect("cert_user", kCertPassword)); }).NativeError(),
            1045u);
}

}  // namespace
