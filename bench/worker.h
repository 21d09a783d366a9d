#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <type_traits>

namespace bench {

// A process that works whenever it is asked to. What it allocates is its own, and so is the state in
// which it leaves the heap: a host uses one solver, and no other has been at work there before.
template <class Answer>
class Worker {
    static_assert(std::is_trivially_copyable_v<Answer>, "it goes through a pipe");

  public:
    // prepare() runs in the new process and gives the function that answers.
    template <class Prepare>
    explicit Worker(const Prepare& prepare)
    {
        int ask[2], answer[2];
        if (pipe(ask) != 0 || pipe(answer) != 0) return;
        process_ = fork();
        if (process_ == 0) serve(prepare(), ask[0], answer[1]);
        close(ask[0]);
        close(answer[1]);
        ask_ = ask[1];
        answer_ = answer[0];
    }
    ~Worker()
    {
        if (process_ <= 0) return;
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        close(ask_);
        close(answer_);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // False: there is no such process, or it has died.
    bool ask(Answer& answer) const
    {
        const char question = '?';
        return process_ > 0 && write(ask_, &question, 1) == 1 &&
               read(answer_, &answer, sizeof answer) == static_cast<ssize_t>(sizeof answer);
    }

  private:
    template <class Work>
    [[noreturn]] static void serve(Work work, int ask, int answer)
    {
        for (char question; read(ask, &question, 1) == 1;) {
            const Answer given = work();
            if (write(answer, &given, sizeof given) != static_cast<ssize_t>(sizeof given)) break;
        }
        _exit(0);
    }

    pid_t process_ = -1;
    int ask_ = -1, answer_ = -1;
};

}  // namespace bench
