#include "support/Fetching.h"

#include <algorithm>
#include <functional>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;

MultipartFormData formOf(std::string content) {
    MultipartFormData form;
    form.append(Data(std::move(content)), "file", "a\"b\r\n.txt", "text/plain");
    return form;
}

// RFC 7578, by hand.
std::string expectedBody(const std::string& boundary, const std::string& content) {
    return "--" + boundary +
           "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"a%22b%0D%0A.txt\"\r\n" +
           "Content-Type: text/plain\r\n\r\n" + content + "\r\n--" + boundary + "--\r\n";
}

TEST(Upload, ArrivesWholeOnBothSidesOfTheThresholdWhileItsProgressRises) {
    for (const std::size_t size : {0, 9'999'999, 10'000'000, 12'000'000}) {
        SCOPED_TRACE(size);
        ScriptedServer server(ScriptedServer::answering(response("200 OK", "thanks")));
        Session session = plainSession();
        std::string content(size, '\0');
        for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 31 + i / 256);
        const MultipartFormData form = formOf(content);
        URLRequest request = requestTo(server.url(), "PUT");
        request.headers.set("Content-Type", "text/html");
        std::vector<double> fractions;
        UploadRequest upload = session.upload(form, request);
        upload.uploadProgress(DispatchQueue::main(), [&](double fraction) { fractions.push_back(fraction); });
        const Answer answer = complete(std::move(upload));
        const auto requests = server.requests();
        ASSERT_EQ(requests.size(), 1U) << answer.outcome();
        EXPECT_EQ(answer.outcome(), "ok");
        EXPECT_EQ(requests[0].field("Content-Type"), "multipart/form-data; boundary=" + form.boundary());
        EXPECT_EQ(requests[0].field("Expect"), "(none)");
        EXPECT_TRUE(requests[0].body == expectedBody(form.boundary(), content));
        ASSERT_FALSE(fractions.empty());
        EXPECT_GT(fractions.front(), 0.0);
        EXPECT_EQ(std::adjacent_find(fractions.begin(), fractions.end(), std::greater_equal<>()),
                  fractions.end());
        EXPECT_EQ(fractions.back(), 1.0);
    }
}

TEST(Upload, IsRewoundForARedirectToTheSameHost) {
    for (const std::size_t threshold : {std::size_t{0}, Session::defaultEncodingMemoryThreshold}) {
        ScriptedServer server([](Peer& peer) {
            peer.answer(response("307 Temporary Redirect", "", "Location: /next\r\n"));
            peer.answer(response("200 OK", "thanks"));
        });
        Session session = plainSession();
        const MultipartFormData form = formOf("document");
        EXPECT_EQ(complete(session.upload(form, requestTo(server.url(), "POST"), threshold)).outcome(), "ok");
        const auto requests = server.requests();
        ASSERT_EQ(requests.size(), 2U);
        EXPECT_EQ(requests[1].body, expectedBody(form.boundary(), "document"));
    }
}

TEST(Upload, AnsweredBeforeItsEndKeepsTheAnswer) {
    ScriptedServer server([](Peer& peer) {
        peer.send(response("413 Content Too Large", "too large", "Connection: close\r\n"));
    });
    Session session = plainSession();
    const Answer answer =
        complete(session.upload(formOf(std::string(20'000'000, 'x')), requestTo(server.url(), "POST")));
    EXPECT_EQ(answer.status(), 413) << answer.outcome();
    EXPECT_EQ(answer.data(), "too large");
}

}  // namespace
}  // namespace torvel
