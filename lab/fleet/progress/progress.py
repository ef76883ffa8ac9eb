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
        self.ended = 0

    def show(self, result, text):
        self._display.display(f"{monotonic() - self.began:4.0f} s  {result._host.get_name()}  {text}")

    def v2_runner_on_ok(self, result):
        if result._task.get_name() == "Install":
            self.ended += 1
            self.show(result, f"exit code {result._result['rc']}  ({self.ended})")

    def v2_runner_on_failed(self, result, ignore_errors=False):
        self.show(result, f"{result._task.get_name()}: {result._result.get('msg', 'failed')}")

    def v2_runner_on_unreachable(self, result):
        self.show(result, f"not reached: {result._result.get('msg', '')}")
