#include "TorvelPlatform/http/TransferLoop.h"

#include <algorithm>
#include <array>

#include <sys/eventfd.h>
#include <sys/socket.h>

namespace torvel {

struct TransferLoop::Callbacks {
    static TransferLoop& of(void* loop) { return *static_cast<TransferLoop*>(loop); }

    static int socket(CURL* easy, curl_socket_t fd, int what, void* user, void*) {
        Transfer* transfer = nullptr;
        if (what == CURL_POLL_REMOVE) {
            of(user).want(fd, 0, nullptr);
            return 0;
        }
        curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
        of(user).want(
            fd, ((what & CURL_POLL_IN) != 0 ? EPOLLIN : 0U) | ((what & CURL_POLL_OUT) != 0 ? EPOLLOUT : 0U),
            transfer);
        return 0;
    }

    static int timer(CURLM*, long milliseconds, void* user) {
        std::optional<Clock::time_point>& timer = of(user).m_timer;
        timer.reset();
        if (milliseconds >= 0) timer = Clock::now() + std::chrono::milliseconds(milliseconds);
        return 0;
    }

    static curl_socket_t open(void* user, curlsocktype, curl_sockaddr* address) {
        const int fd = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
        if (fd < 0) return CURL_SOCKET_BAD;
        of(user).m_watches[fd] = {.closingIsKnown = true, .activity = {}};
        return fd;
    }

    static int close(void* user, curl_socket_t fd) {
        of(user).m_watches.erase(fd);  // before its number can be used again
        return ::close(fd);
    }
};

TransferLoop::TransferLoop(std::size_t maximumConnectionsPerHost)
    : m_epoll(epoll_create1(EPOLL_CLOEXEC)),
      m_wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_multi(curl_multi_init()) {
    if (!usable()) return;
    CURLM* const multi = m_multi.get();
    curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, Callbacks::socket);
    curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, Callbacks::timer);
    curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(maximumConnectionsPerHost));
    // Counts busy connections too: below the number in flight it would close every one after its request.
    constexpr long maximumConnections = 20'000;
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, maximumConnections);

    // Edge-triggered and never read: every write wakes once.
    epoll_event event{.events = EPOLLIN | EPOLLET, .data = {.fd = m_wake.get()}};
    epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, m_wake.get(), &event);
}

TransferLoop::~TransferLoop() = default;

bool TransferLoop::add(Transfer& transfer) {
    CURL* const easy = transfer.easy();
    curl_easy_setopt(easy, CURLOPT_PRIVATE, &transfer);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, Callbacks::open);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, Callbacks::close);
    curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, this);
    return curl_multi_add_handle(m_multi.get(), easy) == CURLM_OK;
}

void TransferLoop::remove(Transfer& transfer) { curl_multi_remove_handle(m_multi.get(), transfer.easy()); }

void TransferLoop::want(curl_socket_t socket, std::uint32_t events, const Transfer* transfer) {
    Watch& watch = m_watches[socket];
    watch.wanted = events;
    watch.activity = transfer != nullptr ? transfer->socketActivity() : nullptr;
    // A kept-alive connection is wanted again soon: what is no longer wanted stays registered until it
    // actually fires. Descriptors whose closing we do not hear of cannot wait: their number may come back.
    if ((events & ~watch.registered) != 0 || !watch.closingIsKnown) reconcile(socket, watch);
    if (events == 0 && !watch.closingIsKnown) m_watches.erase(socket);
}

void TransferLoop::reconcile(curl_socket_t socket, Watch& watch) {
    if (watch.registered == watch.wanted) return;
    const int operation = watch.registered == 0 ? EPOLL_CTL_ADD
                          : watch.wanted == 0   ? EPOLL_CTL_DEL
                                                : EPOLL_CTL_MOD;
    epoll_event event{.events = watch.wanted, .data = {.fd = socket}};
    epoll_ctl(m_epoll.get(), operation, socket, &event);
    watch.registered = watch.wanted;
}

void TransferLoop::turn(std::optional<Clock::time_point> deadline) {
    std::array<epoll_event, 64> events;
    const int count =
        epoll_wait(m_epoll.get(), events.data(), static_cast<int>(events.size()), waitTime(deadline));
    for (int i = 0; i < count; ++i) serve(events[static_cast<std::size_t>(i)]);
}

int TransferLoop::waitTime(std::optional<Clock::time_point> deadline) const {
    if (m_timer && (!deadline || *m_timer < *deadline)) deadline = m_timer;
    if (!deadline) return -1;
    constexpr std::chrono::milliseconds longest(60 * 60 * 1000);
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now());
    return static_cast<int>(std::clamp(left, left.zero(), longest).count());
}

void TransferLoop::serve(const epoll_event& event) {
    const auto found = m_watches.find(event.data.fd);
    if (found == m_watches.end()) return;
    Watch& watch = found->second;
    if ((watch.registered & ~watch.wanted) != 0) reconcile(event.data.fd, watch);
    if (watch.wanted == 0) return;
    if (watch.activity) watch.activity->last = Clock::now();
    const int what = ((event.events & EPOLLIN) != 0 ? CURL_CSELECT_IN : 0) |
                     ((event.events & EPOLLOUT) != 0 ? CURL_CSELECT_OUT : 0) |
                     ((event.events & (EPOLLERR | EPOLLHUP)) != 0 ? CURL_CSELECT_ERR : 0);
    int running = 0;
    curl_multi_socket_action(m_multi.get(), event.data.fd, what, &running);
}

void TransferLoop::collect(const Finished& finished) {
    if (m_timer && *m_timer <= Clock::now()) {
        m_timer.reset();
        int running = 0;
        curl_multi_socket_action(m_multi.get(), CURL_SOCKET_TIMEOUT, 0, &running);
    }
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        const CURLcode code = message->data.result;
        Transfer* transfer = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
        finished(*transfer, code);
    }
}

void TransferLoop::wake() const {
    const std::uint64_t one = 1;
    static_cast<void>(!::write(m_wake.get(), &one, sizeof one));
}

}  // namespace torvel
