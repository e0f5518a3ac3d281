// The site's news, in their states.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";
import { newsMessage } from "./support/sample_messages.mjs";

const newsPath = "/api/news.json";

async function reopen(launcher) {
  await launcher.open("Accueil");
  await launcher.open("Nouveautes");
}

journey("news fail, come back, and are then kept", { game: { installed: true } }, async (launcher, game) => {
  const { page } = launcher;
  game.start(launcher);
  const release = game.server.hold(newsPath);
  await launcher.open("Nouveautes");
  assert.equal(await launcher.text("news-hint"), "Chargement...");
  release();
  await launcher.waitForText("news-empty-title", "Actualites indisponibles");
  assert.equal(await launcher.text("news-hint"), "");
  game.server.content.set(newsPath, "<html>en travaux</html>");
  await reopen(launcher);
  await launcher.waitForText("news-empty-title", "Actualites illisibles");
  const items = Array.from({ length: 25 }, (_, i) => ({ date: "2026-01-02", title: "Nouvelle \u00e9t\u00e9 \u65e5 " + i, tag: "contenu" }));
  game.server.content.set(newsPath, JSON.stringify({ items }));
  await reopen(launcher);
  await launcher.waitForText("news-hint", "25 actualites");
  assert.equal(await page.locator(".news-item").count(), 20);
  assert.equal(await page.locator(".news-title").last().textContent(), "Nouvelle \u00e9t\u00e9 \u65e5 19");
  assert.equal(await page.isVisible("#news-empty"), false);
  await reopen(launcher);
  assert.equal(game.server.count(newsPath), 3);
});

journey("a site without news says so and is not asked again", { game: { installed: true } }, async (launcher, game) => {
  game.server.content.set(newsPath, '{"items":[]}');
  game.start(launcher);
  await launcher.open("Nouveautes");
  await launcher.waitForText("news-empty-title", "Aucune actualite pour le moment");
  assert.equal(await launcher.text("news-empty-text"), "Reviens plus tard.");
  await reopen(launcher);
  assert.deepEqual(launcher.requests.map((request) => request.action), ["getNews"]);
});

// A time zone behind UTC, where a date read as midnight UTC would be the day before.
journey("items show what the site wrote, and only https links leave the launcher", { timezone: "America/New_York" },
  async (launcher) => {
    const { page } = launcher;
    const url = "https://tolmira.example/nouvelles?id=1";
    const dates = ["2026-03-07", "2026-13-07", "2026-3-7", "hier", undefined, 7];
    await launcher.open("Nouveautes");
    await launcher.send(newsMessage([
      ...dates.map((date) => ({ date, title: "date" })),
      { tag: "CORRECTIF", url, title: "lien" },
      { tag: "inconnu", url: "http://tolmira.example/" },
      { tag: "", url: ["https://tolmira.example/"], summary: "" },
      null, 5, "texte", { title: { a: 1 } },
    ]));
    assert.equal(await launcher.text("news-hint"), "13 actualites");
    const cards = page.locator(".news-item");
    assert.deepEqual((await cards.locator(".news-date").allTextContents()).slice(0, 6), ["7 mars 2026", "2026-13-07", "2026-3-7", "hier", "", "7"]);
    assert.deepEqual(await page.locator(".tag").evaluateAll((all) => all.map((tag) => tag.className + ":" + tag.textContent)),
      ["tag correctif:correctif", "tag:inconnu"]);
    assert.equal(await page.locator(".clickable").count(), 1);
    assert.equal(await page.locator(".news-summary").count(), 0);
    await page.locator(".clickable").click();
    await page.locator(".clickable").press("Enter");
    await page.click("#news-open-site");
    assert.deepEqual(launcher.requests.slice(1), [url, url, "https://tolmira.example/"].map((link) => ({ action: "openUrl", url: link })));
  });
