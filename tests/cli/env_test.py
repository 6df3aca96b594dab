"""mvserver env: the directory."""

import unittest

from harness import CommandLineTest


class Env(CommandLineTest):
    def setUp(self):
        super().setUp()
        self.hub = self.start_hub()

    def env(self, *arguments):
        return self.succeed("--hub", self.hub.url, "env", *arguments).stdout.decode()

    def test_list_prints_index_and_name(self):
        self.assertEqual("1\tDevelopment\n3\tProduktion Süd\n", self.env("list"))

    def test_list_can_ask_for_a_version(self):
        self.assertEqual("3\tProduktion Süd\n", self.env("list", "--server-version", "2.0"))

    def test_url_lists_who_serves_it(self):
        self.assertEqual("3\tProduktion Süd\n", self.env("url", "https://www.example.com/orders"))

    def test_show_prints_name_and_index(self):
        self.assertEqual("name\tDevelopment\nindex\t1\n", self.env("show", "Development"))

    def test_show_prints_the_properties_of_the_services_named(self):
        self.assertEqual("name\tDevelopment\nindex\t1\norders\turl\t"
                         "http://127.0.0.1:16064/request\n",
                         self.env("show", "Development", "--service", "orders", "--property", "url"))

    def test_show_names_type_url_and_version_by_default(self):
        self.assertTrue(self.env("show", "Development", "--service", "orders").endswith(
            "orders\ttype\torders\norders\turl\thttp://127.0.0.1:16064/request\n"
            "orders\tversion\t1.0\n"))

    def test_an_unknown_environment_or_service_is_a_usage_error(self):
        self.assertIn("no environment \"Nowhere\"",
                      self.fail_with(2, "--hub", self.hub.url, "env", "show", "Nowhere"))
        self.assertIn("no service \"none\"",
                      self.fail_with(2, "--hub", self.hub.url, "env", "show", "Development",
                                     "--service", "none"))

    def test_json(self):
        _, listed = self.json_of("--hub", self.hub.url, "env", "list")
        self.assertEqual([{"index": 1, "name": "Development"},
                          {"index": 3, "name": "Produktion Süd"}], listed["environments"])
        _, shown = self.json_of("--hub", self.hub.url, "env", "show", "Development", "--service",
                                "orders", "--property", "version")
        self.assertEqual({"name": "Development", "index": 1,
                          "services": {"orders": {"version": "1.0"}}}, shown["environment"])


class Shutdown(CommandLineTest):
    def test_the_hub_ends(self):
        hub = self.start_hub()
        self.succeed("--hub", hub.url, "shutdown")
        self.assertEqual(0, hub.ended())

    def test_without_a_hub_it_is_a_connection_failure(self):
        hub = self.start_hub()
        hub.stop()
        self.fail_with(3, "--hub", hub.url, "shutdown")


if __name__ == "__main__":
    unittest.main()
