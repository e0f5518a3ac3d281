// The linter's rules for the page's script and for the scripts that test it.
import js from "@eslint/js";
import html from "eslint-plugin-html";
import globals from "globals";

export default [
  js.configs.recommended,
  { files: ["**/*.html"], plugins: { html }, languageOptions: { sourceType: "script", globals: globals.browser } },
  { files: ["**/*.mjs"], languageOptions: { globals: { ...globals.node, ...globals.browser } } },
];
