"""What a person wants to see of a roll-out: a line for each machine when its installer has ended, and what failed."""

from time import monotonic

from ansible.plugins.callback import CallbackBase

DOCUMENTATION = """
    name: progress
    type: stdout
    short_description: a line for each machine
    description: Shows a line for each machine when its installer has ended, and each other task that fails.
"""


class CallbackModule(CallbackBase):
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "stdout"
    CALLBACK_NAME = "progress"

    def __init__(self):
        super().__init__()
        self.began = monotonic()
        self.ended = set()
        self.machines = 0

    def v2_playbook_on_play_start(self, play):
        self.machines = len(play.get_variable_manager().get_vars(play=play)["ansible_play_hosts_all"])

    def show(self, result, text):
        """Counts a machine once, whatever fails on it afterwards."""
        name = result._host.get_name()
        if name not in self.ended:
            self.ended.add(name)
            text += f"  ({len(self.ended)} of {self.machines})"
        self._display.display(f"{monotonic() - self.began:4.0f} s  {name}  {text}")

    def v2_runner_on_ok(self, result):
        if result._task.get_name() == "Install":
            self.show(result, f"exit code {result._result['rc']}")

    def v2_runner_on_failed(self, result, ignore_errors=False):
        self.show(result, f"{result._task.get_name()}: {result._result.get('msg', 'failed')}")

    def v2_runner_on_unreachable(self, result):
        self.show(result, f"not reached: {result._result.get('msg', '').strip()}")
