#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelLibrary/Data/Remote/Networking/RequestLog.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/PEMUtils.h"
#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelPlatform/uikit/UIColor.h"
#include "TorvelTesting/Certificates.h"
#include "TorvelTesting/HostFixture.h"

#include <functional>
#include <latch>
#include <thread>

namespace torvel {
namespace {

const URL firstHost = *URL::parse("https://first.example/a");
const URL secondHost = *URL::parse("https://second.example/b");

struct Facade : testing::HostFixture {
    // Whether the session's evaluator for the host accepts a certificate that nothing vouches for.
    static bool isDisabled(const Session& session, std::string_view host) {
        const auto* evaluator = session.serverTrustManager()->evaluator(host);
        return dynamic_cast<const DisabledEvaluator*>(evaluator) != nullptr;
    }
};

TEST_F(Facade, BuildsTheDefaultsOrWhatIsSet) {
    EXPECT_EQ(TorvelLibraryBuilder().getWrapperConfig(), WrapperConfig::VelmMoney);
    TorvelLibraryBuilder().build();
    const auto library = TorvelLibrary::sharedInstance();
    EXPECT_EQ(library->serverURL, "");
    EXPECT_EQ(library->requestTimeoutInterval, 30.0);
    EXPECT_EQ(library->wrapperConfig, WrapperConfig::VelmMoney);
    EXPECT_EQ(library->sslType, SSlPinningType::none());
    EXPECT_EQ(library->fontSizesDependency->getTitleSize(), 15);
    EXPECT_FALSE(library->encryptionCertName || library->base64String || library->currencyMap);

    const auto sizes = std::make_shared<FontSizesDependencyComponent>();
    TorvelLibraryBuilder()
        .setBase64("dG9rZW4=")
        .setFontSizesDependency(sizes)
        .setWrapperConfig(WrapperConfig::Dunmere)
        .setCurrencyMap({{"$", "US$"}})
        .build();
    EXPECT_EQ(TorvelLibrary::sharedInstance()->base64String, "dG9rZW4=");
    EXPECT_EQ(TorvelLibrary::sharedInstance()->fontSizesDependency, sizes);
    EXPECT_EQ(TorvelLibrary::sharedInstance()->currencyMap->at("$"), "US$");
    EXPECT_EQ(TorvelLibraryBuilder().getWrapperConfig(), WrapperConfig::Dunmere)
        << "of the installed instance";
}

TEST_F(Facade, WithoutABuildTheDefaultInstanceIsLoggedOnce) {
    const std::string log = logOf([] {
        EXPECT_EQ(TorvelLibrary::sharedInstance()->serverURL, "");
        EXPECT_FALSE(TorvelLibrary::sharedInstance()->requestTimeoutInterval.has_value());
    });
    EXPECT_EQ(
        log,
        " [‼️] ERROR[TorvelLibrary]:196 23 sharedInstance() -> TorvelLibrary not configured properly\n");
}

TEST_F(Facade, WithoutPinningEveryHostSharesTheDefaultSession) {
    TorvelLibraryBuilder().build();
    const auto library = TorvelLibrary::sharedInstance();
    EXPECT_EQ(library->manager(), nullptr);
    EXPECT_EQ(library->getAlamofireServiceManager(firstHost), Session::defaultSession());
    EXPECT_EQ(library->getAlamofireServiceManager(secondHost), Session::defaultSession());
    library->setManager(nullptr);
    library->eventMonitors.push_back(std::make_shared<RequestLog>());
    const auto watched = library->getAlamofireServiceManager(firstHost);
    EXPECT_NE(watched, Session::defaultSession());
    EXPECT_EQ(watched->serverTrustManager(), nullptr);
    EXPECT_EQ(library->getAlamofireServiceManager(secondHost), watched);
}

TEST_F(Facade, TheBypassWinsOverPinningAndReadsNoCertificate) {
    TorvelLibraryBuilder()
        .setIsHttpsByPassRequired(true)
        .setSSlType(SSlPinningType::certificate({"no such file"}))
        .build();
    const auto session = TorvelLibrary::sharedInstance()->getAlamofireServiceManager(firstHost);
    EXPECT_TRUE(isDisabled(*session, "first.example"));
}

TEST_F(Facade, PinningCoversTheFirstHostOnly) {
    const testing::Identity identity = testing::issue({});
    addResource("pin.der", identity.der.raw());
    const SSlPinningType pinnings[] = {SSlPinningType::certificate({"pin"}),
                                       SSlPinningType::publicKey({identity.publicKeyPem})};
    for (const SSlPinningType& pinning : pinnings) {
        TorvelLibraryBuilder().setSSlType(pinning).build();
        const auto library = TorvelLibrary::sharedInstance();
        const auto first = library->getAlamofireServiceManager(firstHost);
        EXPECT_FALSE(isDisabled(*first, "first.example"));
        EXPECT_EQ(library->getAlamofireServiceManager(*URL::parse("https://FIRST.example/")), first);

        const auto second = library->getAlamofireServiceManager(secondHost);
        EXPECT_NE(second, first);
        EXPECT_TRUE(isDisabled(*second, "second.example"));
        EXPECT_FALSE(isDisabled(*second, "first.example"));
        EXPECT_EQ(library->getAlamofireServiceManager(firstHost), second);
        EXPECT_EQ(library->getAlamofireServiceManager(secondHost), second);

        library->sslType = SSlPinningType::none();
        EXPECT_EQ(library->getAlamofireServiceManager(firstHost), second)
            << "a session is kept once it exists";
    }
}

TEST_F(Facade, ASecondBuildStartsWithoutASession) {
    TorvelLibraryBuilder().setIsHttpsByPassRequired(true).build();
    std::weak_ptr<Session> first = TorvelLibrary::sharedInstance()->getAlamofireServiceManager(firstHost);
    TorvelLibraryBuilder().build();
    EXPECT_EQ(TorvelLibrary::sharedInstance()->manager(), nullptr);
    EXPECT_TRUE(first.expired());
}

TEST_F(Facade, DeploymentFaultsOfPinsStopTheProcess) {
    addResource("text.der", "not a certificate");
    std::filesystem::create_directory(directory() / "folder.der");
    EXPECT_DEATH(TorvelLibrary::getSSLPinningCerts({"absent"}), "absent certficate not found in app bundle");
    EXPECT_DEATH(TorvelLibrary::getSSLPinningCerts({"text"}), "text certficate is not valid");
    EXPECT_DEATH(TorvelLibrary::getSSLPinningCerts({"folder"}), "folder certficate is not valid");
    const std::string key = testing::issue({}).publicKeyPem;
    EXPECT_EQ(TorvelLibrary::getSSLPinningPublicKeys({key}).size(), 1U);
    for (const std::string& text : {std::string("no key"), std::string(), "\u00E9\n" + key})
        EXPECT_DEATH(TorvelLibrary::getSSLPinningPublicKeys({text}), "Fatal error");
    EXPECT_TRUE(TorvelLibrary::getSSLPinningCerts({}).empty());
}

// Every shared thing is made at its first use, whichever thread that is.
TEST_F(Facade, FirstUsesRaceCleanly) {
    addResource("EndpointsConfig.plist", "{ login = \"api/login\"; }");
    TorvelLibraryBuilder().setServerURL("https://first.example/").build();
    const std::function<void()> uses[] = {
        [] { EXPECT_NE(TorvelLibrary::sharedInstance(), nullptr); },
        [] { EXPECT_NE(TorvelLibrary::sharedInstance()->getAlamofireServiceManager(secondHost), nullptr); },
        [] { EXPECT_EQ(EndpointsHelper::getEndPoint<std::string>("login"), "api/login"); },
        [] { EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "en"); },
        [] { EXPECT_EQ(getLocalisedValue("absent", Bundle::main(), "Localizable"), "absent"); },
        [] { EXPECT_FALSE(ValidationHelper::validateData("x", "[0-9]+")); },
        [] { EXPECT_FALSE(CardUtils::sharedInstance().validateCardNumber("4111")); },
        [] { EXPECT_FALSE(getDisplayAmountWithoutCurrency("1", "$", true).empty()); },
        [] { EXPECT_TRUE(AES256CBC::encryptString("text", AES256CBC::generatePassword()).has_value()); },
        [] { EXPECT_FALSE(PEMUtils::getSecKey()); },
        [] { EXPECT_FALSE(UserStorageHelper::string("absent")); },
        [] { EXPECT_EQ(Utils::getEnglishNumber("1"), "1"); },
        [] { EXPECT_FALSE(UIColor::named("absent", Bundle::main())); },
        [] { LogUtils::d("a line"); },
    };
    constexpr int rounds = 3;
    std::latch start(rounds * std::size(uses));
    std::vector<std::thread> threads;
    for (int round = 0; round < rounds; ++round)
        for (const auto& use : uses)
            threads.emplace_back([&] {
                start.arrive_and_wait();
                use();
            });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace torvel
