"""zeb watch ends on Ctrl-C as one that was asked to."""
import signal

import test_watch

LINUX_ONLY = True  # no signal reaches a program of Wine's as Ctrl-C


class Interrupt(test_watch.Watching):
    def test_an_interrupt_ends_the_watch_well(self):
        process = self.watch("Inbox")
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(self.said(self.out), "")
