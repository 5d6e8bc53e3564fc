#pragma once

#include "TorvelLibrary/Data/Remote/Networking/RequestWrapper.h"
#include "TorvelLibrary/Data/Remote/Networking/ResponseParser.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Decodable.h"
#include "TorvelPlatform/http/Session.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// The interceptors of one operation, in the order in which they run.
using RequestInterceptors = std::vector<std::shared_ptr<RequestWrapper>>;
using ResponseInterceptors = std::vector<std::shared_ptr<ResponseParser>>;
// Receives the body of the answer, as the response interceptors left it.
using OnSuccess = std::function<void(Data)>;
// Receives an APITimeError: recover it with dynamic_cast<const APITimeError*>(&error).
using OnError = std::function<void(const Decodable&)>;
// Receives the fraction sent, rising to 1.0.
using OnUploadProgress = std::function<void(double)>;

// The request pipeline. Every operation has its default here; TorvelNetworkClient uses them all.
//
// A target that starts with "http" is percent-encoded and used whole, any other is appended to serverURL()
// as it stands. The request interceptors run in order on the caller's thread, then the request goes out on
// the session that TorvelLibrary gives for its URL, and exactly one of onSuccess and onError is called,
// once, on the main queue (DispatchQueue::main()). The exception is a target that makes no URL: onError is
// then called at once, on the caller's thread.
//
// An error answer whose body is JSON and whose status is not 401 goes to onSuccess, after the response
// interceptors: hosts decode the server's own error payload there.
//
// Every operation returns a handle that may be ignored. A request that is cancelled before its callback has
// begun ends in one onError on the main queue, never in onSuccess. A callback that is empty is not called.
//
// The client itself may be destroyed while requests are in flight. Any thread.
class NetworkDispatcher {
  public:
    virtual ~NetworkDispatcher() = default;

    // The base of relative targets. An absent URL in the shared TorvelLibrary stops the process.
    virtual std::string serverURL() const;

    // Sends `postBody` by POST, with `mimeType` as its content type.
    virtual RequestHandle postRequest(std::string_view target, Data postBody, std::string_view mimeType,
                                      const RequestInterceptors& requestInterceptors,
                                      const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                      OnError onError) const;
    // Sends `postBody` as the one part of a multipart form: field "file", named `fileName`, of the MIME
    // type that its first byte suggests. `requestType` is the HTTP method. `mimeType` becomes the request's
    // content type for the interceptors, before the form's own replaces it. The status of the answer is not
    // validated: any that comes with a body reaches onSuccess.
    virtual RequestHandle multipartRequest(std::string_view target, std::string_view requestType,
                                           Data postBody, std::string_view mimeType,
                                           std::string_view fileName,
                                           const RequestInterceptors& requestInterceptors,
                                           const ResponseInterceptors& responseInterceptors,
                                           OnSuccess onSuccess, OnError onError,
                                           OnUploadProgress onUploadProgress) const;
    virtual RequestHandle putRequest(std::string_view target, Data postBody, std::string_view mimeType,
                                     const RequestInterceptors& requestInterceptors,
                                     const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                     OnError onError) const;
    // A DELETE carries a body here.
    virtual RequestHandle deleteRequest(std::string_view target, Data postBody, std::string_view mimeType,
                                        const RequestInterceptors& requestInterceptors,
                                        const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                        OnError onError) const;
    virtual RequestHandle getRequest(std::string_view target, std::string_view mimeType,
                                     const RequestInterceptors& requestInterceptors,
                                     const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                     OnError onError) const;

    // Cancels every request of the process that has not called back, whichever client began it: for logout.
    static void cancelAll() { Session::cancelAllRequests(); }

    // --- The steps of the operations above, for hosts that build requests of their own. ---

    // The request for a target; absent when it makes no URL.
    std::optional<URLRequest> getRequest(std::string_view target) const;

    // Sends a request, or a file as the one part of a multipart form, and handles the answer.
    static RequestHandle consumeRequest(URLRequest& request, std::string_view mimeType,
                                        const RequestInterceptors& requestInterceptors,
                                        const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                        OnError onError);
    static RequestHandle consumeMultipartRequest(URLRequest& request, Data fileData,
                                                 std::string_view mimeType, std::string_view fileName,
                                                 const RequestInterceptors& requestInterceptors,
                                                 const ResponseInterceptors& responseInterceptors,
                                                 OnSuccess onSuccess, OnError onError,
                                                 OnUploadProgress onUploadProgress);
    // Sets the facade's timeout (absent: stops the process) and the content type, then runs the interceptors.
    static void setUpRequest(URLRequest& request, std::string_view mimeType,
                             const RequestInterceptors& requestInterceptors);
    static void handleResponse(DataResponse response, const ResponseInterceptors& responseInterceptors,
                               const OnSuccess& onSuccess, const OnError& onError);
    static void handleResponseData(Data responseData, const ResponseInterceptors& responseInterceptors,
                                   const OnSuccess& onSuccess);

  private:
    // POST, PUT and DELETE but for the method.
    RequestHandle requestWithBody(const char* method, std::string_view target, Data body,
                                  std::string_view mimeType, const RequestInterceptors& requestInterceptors,
                                  const ResponseInterceptors& responseInterceptors, OnSuccess onSuccess,
                                  OnError onError) const;
};

}  // namespace torvel
