"""Status bars that are there first, that go and that come back."""

import unittest

from support.case import ProgramCase
from support.waiting import spend, stays_true


class HostCase(ProgramCase):
    def begin(self):
        self.puppets, = self.puppet_runners({})
        self.program = self.start()
        self.puppets.wait_for_one()


class LateHostTest(HostCase):
    def test_a_host_that_was_there_first(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host)

    def test_a_watcher_whose_host_comes_later(self):
        host = self.new_host(hosted=False)
        self.begin()
        stays_true(lambda: not host.items, "no item yet", 1)
        host.begin_hosting()
        self.assert_item_in(host)


class RestartedHostTest(HostCase):
    def test_the_item_is_there_after_each_restart(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host)
        for round_ in range(20):
            host.close()
            spend(round_ % 3 * 0.1)
            host = self.new_host()
            self.assert_item_in(host)
        # What changed while nobody looked is right afterwards.
        host.close()
        self.puppets.say('time="x" level=info msg="Running job with maxParallel=1"\n')
        spend(0.5)
        item = self.assert_item_in(self.new_host(), "Status: Building a job")
        item.menu().choose("Quit Valdorn")
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_lives_on_without_the_host(self):
        host = self.new_host()
        self.begin()
        self.assert_item_in(host)
        host.close()
        spend(1)
        self.assertTrue(self.program.is_running())
        self.assertEqual(len(self.puppets.living()), 1)


if __name__ == "__main__":
    unittest.main()
