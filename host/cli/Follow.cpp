#include "cli/Follow.h"

#include <string>
#include <vector>

#include "cli/Ending.h"
#include "cli/Failure.h"
#include "source/Answer.h"
#include "text/Charset.h"
#include "text/Utf8.h"

namespace host {
namespace {

std::string textOf(const std::vector<std::string>& lines, Charset charset) {
    std::string text;
    for (const std::string& line : lines) text += shownIn(charset, printable(line)) + '\n';
    return text;
}

class Following {
  public:
    Following(LogFollower& follower, const std::optional<SeenLines>& state, Output& output,
              const TroubleListener& listener)
        : m_follower(follower),
          m_state(state),
          m_output(output),
          m_answerTrouble([this, &listener](const std::string& text) {
              text.empty() ? listener.line("the provider answers again") : listener.failure(*m_failure);
          }),
          m_logTrouble([&listener](const std::string& text) {
              listener.line(text.empty() ? "the event log is valid again" : text);
          }),
          m_stateTrouble([&listener](const std::string& text) {
              listener.line(text.empty() ? "the state is written again" : text);
          }) {
        if (m_state) m_state->write(m_follower.seen());
    }

    void look() {
        m_output.requireReader();
        const LogFollower::Look look = m_follower.next();
        const bool hasFailed = look.status.rc != CMPI_RC_OK;
        if (hasFailed) m_failure = look.status;
        m_answerTrouble.now(hasFailed ? statusText(look.status) : "");
        if (!hasFailed) m_logTrouble.now(look.isValid ? "" : "the event log is not valid; its lines wait until it is");
        m_output.write(textOf(look.lines, m_output.charset()));
        m_isUnsaved = m_isUnsaved || look.hasChanged;
        save();
    }

    bool isSaved() const { return !m_state || !m_isUnsaved; }
    const std::optional<broker::Status>& failure() const { return m_failure; }

  private:
    void save() {
        if (!m_state || !m_isUnsaved) return;
        try {
            m_state->write(m_follower.seen());
            m_isUnsaved = false;
            m_stateTrouble.now("");
        } catch (const OutputError& error) {
            m_stateTrouble.now(error.what());
        }
    }

    LogFollower& m_follower;
    const std::optional<SeenLines>& m_state;
    Output& m_output;
    std::optional<broker::Status> m_failure;
    bool m_isUnsaved = false;
    Trouble m_answerTrouble;
    Trouble m_logTrouble;
    Trouble m_stateTrouble;
};

}  // namespace

FollowOutcome followLog(LogFollower& follower, const std::optional<SeenLines>& state, const FollowTiming& timing,
                        Output& output, const TroubleListener& listener) {
    constexpr std::chrono::seconds grace(2);
    Ending ending(grace, [] { return ExitCode::Fine; });
    Following following(follower, state, output, listener);
    const Ending::Clock::time_point start = Ending::Clock::now();
    for (unsigned looks = 1;; ++looks) {
        following.look();
        if (looks == timing.looks) return {following.failure(), following.isSaved()};
        if (!ending.waitUntil(nextMultiple(start, timing.interval, Ending::Clock::now()))) {
            return {std::nullopt, following.isSaved()};
        }
    }
}

}  // namespace host
