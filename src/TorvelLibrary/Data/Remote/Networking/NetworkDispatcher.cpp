#include "TorvelLibrary/Data/Remote/Networking/NetworkDispatcher.h"

#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/Target.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/http/URLCache.h"

namespace torvel {
namespace {

constexpr std::string_view source = "Data/Remote/Networking/NetworkDispatcher";
constexpr int unauthorized = 401;

void debug(std::string_view message, std::string_view function,
           const std::source_location& where = std::source_location::current()) {
    LogUtils::d(message, {source, function, where});
}

// The bytes as text for the log, empty when they are not UTF-8.
std::string_view loggable(const Data& bytes) {
    return isValidUTF8(bytes.raw()) ? std::string_view(bytes.raw()) : std::string_view();
}

std::string labelled(std::string_view label, const Data& bytes) {
    const std::string_view text = loggable(bytes);
    std::string message;
    message.reserve(label.size() + text.size());
    message.append(label).append(text);
    return message;
}

// The session for the request's URL, which must be present by now.
std::shared_ptr<Session> sessionFor(const URLRequest& request) {
    if (!request.url) fatalError("A request without a URL cannot be sent");
    return TorvelLibrary::sharedInstance()->getAlamofireServiceManager(*request.url);
}

DataRequest::Completion deliverTo(const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                  OnError onError) {
    return [responseInterceptors, onSuccess = std::move(onSuccess),
            onError = std::move(onError)](DataResponse response) {
        NetworkDispatcher::handleResponse(std::move(response), responseInterceptors, onSuccess, onError);
    };
}

Data afterInterceptors(Data bytes, const ResponseInterceptors& responseInterceptors,
                       std::string_view function) {
    for (const auto& interceptor : responseInterceptors) bytes = interceptor->parseResponse(std::move(bytes));
    debug(labelled("Response After Interceptors - ", bytes), function);
    return bytes;
}

void succeed(const OnSuccess& onSuccess, Data bytes) {
    if (onSuccess) onSuccess(std::move(bytes));
}

RequestHandle send(URLRequest request, const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                   OnError onError) {
    const std::shared_ptr<Session> session = sessionFor(request);
    return session->request(std::move(request))
        .validate()
        .responseData(DispatchQueue::main(),
                      deliverTo(responseInterceptors, std::move(onSuccess), std::move(onError)));
}

RequestHandle reportUnexpected(const OnError& onError) {
    if (onError)
        onError(APITimeError(
            "Unexpected Error", "-1", std::nullopt,
            SessionError{SessionError::Kind::invalidRequest, "The target makes no URL.", std::nullopt}));
    return {};
}

}  // namespace

std::string NetworkDispatcher::serverURL() const {
    const auto library = TorvelLibrary::sharedInstance();
    if (!library->serverURL) fatalError("The serverURL of TorvelLibrary is absent");
    return *library->serverURL;
}

RequestHandle NetworkDispatcher::postRequest(std::string_view target, Data postBody,
                                             std::string_view mimeType,
                                             const RequestInterceptors& requestInterceptors,
                                             const ResponseInterceptors& responseInterceptors,
                                             OnSuccess onSuccess, OnError onError) const {
    return requestWithBody("POST", target, std::move(postBody), mimeType, requestInterceptors,
                           responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::putRequest(std::string_view target, Data postBody, std::string_view mimeType,
                                            const RequestInterceptors& requestInterceptors,
                                            const ResponseInterceptors& responseInterceptors,
                                            OnSuccess onSuccess, OnError onError) const {
    return requestWithBody("PUT", target, std::move(postBody), mimeType, requestInterceptors,
                           responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::deleteRequest(std::string_view target, Data postBody,
                                               std::string_view mimeType,
                                               const RequestInterceptors& requestInterceptors,
                                               const ResponseInterceptors& responseInterceptors,
                                               OnSuccess onSuccess, OnError onError) const {
    return requestWithBody("DELETE", target, std::move(postBody), mimeType, requestInterceptors,
                           responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::requestWithBody(const char* method, std::string_view target, Data body,
                                                 std::string_view mimeType,
                                                 const RequestInterceptors& requestInterceptors,
                                                 const ResponseInterceptors& responseInterceptors,
                                                 OnSuccess onSuccess, OnError onError) const {
    std::optional<URLRequest> request = getRequest(target);
    if (!request) return reportUnexpected(onError);
    request->httpMethod = method;
    request->httpBody = std::move(body);
    debug("TARGET IS " + std::string(target), method);
    setUpRequest(*request, mimeType, requestInterceptors);
    return send(std::move(*request), responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::getRequest(std::string_view target, std::string_view mimeType,
                                            const RequestInterceptors& requestInterceptors,
                                            const ResponseInterceptors& responseInterceptors,
                                            OnSuccess onSuccess, OnError onError) const {
    std::optional<URLRequest> request = getRequest(target);
    if (!request) return reportUnexpected(onError);
    setUpRequest(*request, mimeType, requestInterceptors);
    return send(std::move(*request), responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::multipartRequest(std::string_view target, std::string_view requestType,
                                                  Data postBody, std::string_view mimeType,
                                                  std::string_view fileName,
                                                  const RequestInterceptors& requestInterceptors,
                                                  const ResponseInterceptors& responseInterceptors,
                                                  OnSuccess onSuccess, OnError onError,
                                                  OnUploadProgress onUploadProgress) const {
    std::optional<URLRequest> request = getRequest(target);
    if (!request) return reportUnexpected(onError);
    request->httpMethod = requestType;
    request->httpBody = std::nullopt;
    debug("TARGET IS " + std::string(target), "multipartRequest(...)");
    return consumeMultipartRequest(*request, std::move(postBody), mimeType, fileName, requestInterceptors,
                                   responseInterceptors, std::move(onSuccess), std::move(onError),
                                   std::move(onUploadProgress));
}

std::optional<URLRequest> NetworkDispatcher::getRequest(std::string_view target) const {
    if (auto url = wholeURL(target)) return URLRequest(std::move(*url));
    if (auto url = URL::parse(serverURL().append(target))) return URLRequest(std::move(*url));
    return std::nullopt;
}

void NetworkDispatcher::setUpRequest(URLRequest& request, std::string_view mimeType,
                                     const RequestInterceptors& requestInterceptors) {
    constexpr std::string_view function = "setUpRequest(request:mimeType:requestInterceptors:)";
    const std::optional<double> timeout = TorvelLibrary::sharedInstance()->requestTimeoutInterval;
    if (!timeout) fatalError("The requestTimeoutInterval of TorvelLibrary is absent");
    request.timeoutInterval = *timeout;
    request.headers.set("Content-Type", mimeType);

    debug("Request URL - " + (request.url ? request.url->absoluteString() : std::string()), function);
    if (request.httpBody) debug(labelled("Request Body Initial - ", *request.httpBody), function);
    for (const auto& interceptor : requestInterceptors) {
        request = interceptor->wrapRequest(request);
        if (request.httpBody)
            debug(labelled("Request Body After Each Interceptors - ", *request.httpBody), function);
    }
}

RequestHandle NetworkDispatcher::consumeRequest(URLRequest& request, std::string_view mimeType,
                                                const RequestInterceptors& requestInterceptors,
                                                const ResponseInterceptors& responseInterceptors,
                                                OnSuccess onSuccess, OnError onError) {
    setUpRequest(request, mimeType, requestInterceptors);
    return send(request, responseInterceptors, std::move(onSuccess), std::move(onError));
}

RequestHandle NetworkDispatcher::consumeMultipartRequest(URLRequest& request, Data fileData,
                                                         std::string_view mimeType, std::string_view fileName,
                                                         const RequestInterceptors& requestInterceptors,
                                                         const ResponseInterceptors& responseInterceptors,
                                                         OnSuccess onSuccess, OnError onError,
                                                         OnUploadProgress onUploadProgress) {
    setUpRequest(request, mimeType, requestInterceptors);
    MultipartFormData form;
    const std::string_view detected = torvel::mimeType(fileData);  // of the bytes, not the caller's
    form.append(std::move(fileData), "file", fileName, detected);
    return sessionFor(request)
        ->upload(std::move(form), request)
        .uploadProgress(DispatchQueue::main(), std::move(onUploadProgress))
        .responseData(DispatchQueue::main(),
                      deliverTo(responseInterceptors, std::move(onSuccess), std::move(onError)));
}

void NetworkDispatcher::handleResponse(DataResponse response,
                                       const ResponseInterceptors& responseInterceptors,
                                       const OnSuccess& onSuccess, const OnError& onError) {
    constexpr std::string_view function = "handleResponse(response:responseInterceptors:onSuccess:onError:)";
    URLCache::shared().removeAllCachedResponses();
    if (!response.error)
        return handleResponseData(std::move(*response.data), responseInterceptors, onSuccess);

    const std::string code = response.response ? std::to_string(response.response->statusCode) : "-1";
    std::string description = response.error->localizedDescription;
    if (response.data && response.response && response.response->statusCode != unauthorized) {
        const auto json = JSON::parse(response.data->raw());
        if (json) {
            debug("Error Responsse is structured.", function);
            return succeed(onSuccess,
                           afterInterceptors(std::move(*response.data), responseInterceptors, function));
        }
        description = json.error().description;
    }
    debug(description, function);
    if (onError)
        onError(
            APITimeError(std::move(description), code, std::move(response.data), std::move(response.error)));
}

void NetworkDispatcher::handleResponseData(Data responseData,
                                           const ResponseInterceptors& responseInterceptors,
                                           const OnSuccess& onSuccess) {
    constexpr std::string_view function = "handleResponseData(responseData:responseInterceptors:onSuccess:)";
    debug(labelled("Response As received - ", responseData), function);
    succeed(onSuccess, afterInterceptors(std::move(responseData), responseInterceptors, function));
}

}  // namespace torvel
