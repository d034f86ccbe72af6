#ifndef KIT_TESTING_SERVICE_PROCESS_H
#define KIT_TESTING_SERVICE_PROCESS_H

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kit
{

/// A simulated service in a process of its own, on a socket that nobody else uses, for tests of what
/// happens when it dies. The destructor kills it and removes socket and folder.
///
/// One thread at a time may start and kill it. Nothing of it survives the object, but a test that is
/// itself killed leaves the process behind.
class ServiceProcess
{
public:
    /// Starts it and waits until it listens. Throws std::runtime_error, with what is wrong in words:
    /// no such program, it ends, or it does not listen within `patience`.
    ///
    /// The program is, in this order: the path given; that in the environment variable
    /// COMMUNICATIONS_SERVICE_SIM; the kit's own, where it was built or installed with the kit.
    explicit ServiceProcess(const std::string& program = std::string(),
                            const std::vector<std::string>& options = {},
                            std::chrono::milliseconds patience = std::chrono::seconds(10));
    ~ServiceProcess();

    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    /// Path of the socket; the same after a restart.
    const std::string& socket() const { return socket_; }

    bool running() const { return pid_ > 0; }
    pid_t pid() const { return pid_; }

    /// Kills it as nothing can be prepared for (SIGKILL), and waits until it is dead.
    void kill();

    /// Stops it in its tracks, as one that hangs, and lets it go on.
    void freeze();
    void thaw();

    /// Starts it again; kills it first where it still runs. Nothing is left of the state before.
    void restart();

private:
    void start();
    void signal(int number) const;
    void release();

    std::string program_;
    std::vector<std::string> options_;
    std::chrono::milliseconds patience_;
    std::string folder_;
    std::string socket_;
    pid_t pid_ = -1;
    int output_ = -1;
};

}  // namespace kit

#endif
