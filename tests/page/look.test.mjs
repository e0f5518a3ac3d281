// What the page looks like and says, as tables.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import path from "node:path";
import { test } from "node:test";
import { journey } from "./support/journey.mjs";
import { assetOrigin, root } from "./support/launcher_page.mjs";
import { newsMessage, optionsMessage, status, verdict } from "./support/sample_messages.mjs";

// As a style sheet says it, for the first element of each kind. A class that no element has is given to one.
const looks = `
:root { --navy-0: #0d1426; --navy-1: #15203b; --navy-2: #0a1120; --gold: #d8af5a; --gold-dim: #8a6d33; --blue: #2f8ff5; --text: #f2e8d2 }
:root { --text-dim: #b7a784; --ink: #3b2e16; --ink-dim: #7d6837; --ok: #2f9e5e; --blue-grad: linear-gradient(135deg, #7cc8ff, #1f6fd0) }
body { background: var(--navy-0); color: var(--text); font-family: "Segoe UI", sans-serif; user-select: none; overflow: hidden }
#hero { height: 200px; padding: 24px 40px 20px; align-items: flex-end; background:
  linear-gradient(to top, rgba(10, 18, 34, .7), rgba(10, 18, 34, 0) 55%),
  linear-gradient(to right, rgba(10, 18, 34, .62), rgba(10, 18, 34, .1) 50%, rgba(10, 18, 34, .55)),
  #16233f url("ASSETS/background.jpg") center 45% / cover no-repeat }
#titlebar { height: 38px; z-index: 5; background: linear-gradient(to bottom, rgba(8, 14, 28, .55), transparent) }
#titlebar .btn { width: 46px; color: #cfe2ff; opacity: .75 } #titlebar .btn:hover { background-color: rgba(255, 255, 255, .14); opacity: 1 }
#win-close:hover { background-color: #c0392b; color: #fff } #titlebar svg { width: 11px; height: 11px; stroke: #cfe2ff; stroke-width: 1.3px }
#logo { max-height: 96px } #navbar { height: 46px; padding: 0 26px; background: #0f1a30 } #hero, #navbar { border-bottom: 1px solid var(--gold-dim) }
.nav-item.active { color: #fff; box-shadow: inset 0 -2px 0 var(--gold); transition: color .15s, box-shadow .15s }
.nav-icon.support { width: 18px; background: url("ASSETS/nav-icon-sprite.png") 0 -72px / 18px auto no-repeat; opacity: .85 }
#news-empty .nav-icon { width: 44px; background: url("ASSETS/nav-icon-sprite.png") 0 -44px / 44px auto no-repeat }
#server-led { width: 17px; height: 17px; background-image: url("ASSETS/led-amber.png") }
#server-led.online { background-image: url("ASSETS/led-green.png") } #server-led.offline { background-image: url("ASSETS/led-red.png") }
#body { gap: 22px; padding: 18px 30px 10px }
.card { border: 34px solid transparent; border-image: url("ASSETS/panel.png") 56 fill / 34px stretch; padding: 18px 20px; color: var(--ink) }
.card-title { letter-spacing: 1.4px } .track { height: 14px; border: 1px solid var(--gold-dim); border-radius: 7px; background: var(--navy-2) }
.fill { background: var(--blue-grad) } #progress-fill { transition: width .25s } #check-fill { transition: width .2s }
#percent-text { color: #1f6fd0 }
.version, #integrity-badge { border: 1px solid rgba(138, 109, 51, .45); border-radius: 10px; background-color: rgba(59, 46, 22, .07) }
.dot { width: 10px; height: 10px; background: var(--ok) } #log-list { flex-direction: column-reverse }
.entry { padding: 8px 0; border-bottom: 1px solid rgba(138, 109, 51, .45) } .time { margin-right: 8px }
.rule { height: 20px; margin: 0 32px; background: url("ASSETS/separator.png") center / contain no-repeat; opacity: .8 }
.action-bar { padding: 10px 32px 26px }
#btn-play { width: 190px; height: 48px; letter-spacing: 1px; color: #fff; cursor: not-allowed; filter: grayscale(1) brightness(.7) }
.opt-section { padding: 6px 20px 10px } .opt-section h2 { letter-spacing: 1.2px; text-transform: uppercase } .opt-row { gap: 20px; padding: 10px 0 }
.opt-row + .opt-row { border-top: 1px solid rgba(138, 109, 51, .45) } .opt-row:hover::before { opacity: 1 } .opt-seg { padding: 4px }
.opt-seg button { min-width: 88px } .opt-seg .active { color: #fff; background: SHADE, var(--blue-grad) }
.opt-switch { width: 46px; height: 26px; border-radius: 13px }
.opt-switch::after { width: 18px; height: 18px; transition: transform .15s, background-color .15s }
.opt-switch.on { background: #1f6fd0; border-color: var(--gold) } .opt-switch.on::after { background: #fff; transform: translateX(20px) }
.opt-select { min-width: 150px } .opt-range { width: 160px; accent-color: var(--blue) } .opt-value { width: 34px; text-align: right }
.push { height: 48px; border-radius: 10px }
#opt-apply { color: #fff; background: linear-gradient(#ffffff29, #0000 32%) padding-box, SHADE padding-box, var(--blue-grad) border-box }
#opt-body, #check-body { padding: 22px 32px 8px } #news-body { padding: 22px 32px 26px }
.news-item { padding: 14px 18px; margin-bottom: 12px; border-radius: 12px }
.clickable:hover { cursor: pointer; border-color: var(--gold); background: #1a2746 } .tag { text-transform: uppercase; border-color: var(--gold-dim) }
.tag.correctif { color: #8fe3b4; border-color: #2f9e5e } .tag.evenement { color: #7cc8ff; border-color: #1f6fd0 }
.tag.maintenance { color: #f0a0a0; border-color: #9e3b3b } #news-empty { padding: 50px 20px; text-align: center } #news-open-site { height: 42px }
#check-head p { max-width: 760px } .check-panel { padding: 18px 20px } #check-percent { color: #7cc8ff } #check-samples { max-height: 220px }
.opt-section, .check-panel { margin-bottom: 16px; border-radius: 14px }
.opt-section, .check-panel, .news-item { border: 1px solid var(--gold-dim); background: var(--navy-1) }
.opt-seg, .opt-select { border: 1px solid var(--gold-dim); border-radius: 10px; background: var(--navy-2) }
#opt-reset, #news-open-site { border: 1px solid var(--gold-dim); background-color: transparent } .tally { background: var(--navy-2) }
#status-text, #file-name, #check-file { text-overflow: ellipsis; white-space: nowrap }
#file-name, #check-file, #check-samples { font-family: Consolas, monospace } .more { font-family: "Segoe UI", sans-serif }
.nav-item:nth-child(2), #server-text, .opt-hint, .opt-value, #opt-state, #news-hint, .news-date { color: var(--text-dim) }
.news-summary, #news-empty-text, #check-head p, #check-state { color: var(--text-dim) }
.card-title, #bytes-text, #speed-text, .version dt, .detail, .time { color: var(--ink-dim) }
.opt-section h2, #opt-state.dirty, .page-title, .tag, #tally-missing, .more { color: var(--gold) }
#server-text.online, #opt-state.saved, #tally-ok { color: #8fe3b4 } #server-text.offline, #tally-corrupt { color: #f0a0a0 }
.news-title, #news-empty-title { color: var(--text) } .tag { font-size: 10px }
#server-text, .version dt, #app-footer, .news-date, .tally dt { font-size: 11px }
.card-title, .detail, .opt-section h2, .opt-hint, #news-hint, #file-name, #check-file, #check-samples { font-size: 12px }
.nav-item, #bytes-text, strong, .entry, .opt-seg button, .opt-value, #opt-state, .news-summary, #check-head p, #check-state { font-size: 13px }
.opt-label, .push, #check-phase { font-size: 14px } #status-text, #btn-play, .news-title { font-size: 15px }
#news-empty-title, #check-percent { font-size: 16px } #percent-text, #version-current { font-size: 17px } .page-title { font-size: 18px }
.tally dd { font-size: 22px }
.card-title, #percent-text, #version-current, strong, #btn-play, .opt-section h2, .push, .tag, .news-title, .page-title { font-weight: 700 }
.nav-item, #server-text, .opt-seg button { font-weight: 600 }
`.replaceAll("SHADE", "linear-gradient(135deg, rgba(0, 52, 158, .68), rgba(0, 52, 158, .2))").replaceAll("ASSETS", assetOrigin);

// The elements' own declarations beside those of an element that has what the table says; both as the browser has them.
function compareLooks(rules) {
  const differences = [];
  for (const [selectors, declarations] of rules) {
    for (const selector of selectors.split(", ")) {
      const [, plain, pseudo] = /^(.*?)(::\w+)?$/.exec(selector);
      const [, base, given] = /^(.*?)(?:\.([\w-]+))?$/.exec(plain);
      const node = document.querySelector(plain) || document.querySelector(base);
      const isGiven = !node.matches(plain);
      if (isGiven) node.classList.add(given);
      const wanted = document.createElement("div");
      wanted.style.cssText = declarations;
      (node.parentElement || document.body).append(wanted);
      for (const name of wanted.style) {
        const [actual, expected] = [getComputedStyle(node, pseudo), getComputedStyle(wanted)].map((style) => style.getPropertyValue(name));
        if (actual !== expected) differences.push(`${selector} ${name}: ${actual}, not ${expected}`);
      }
      wanted.remove();
      if (isGiven) node.classList.remove(given);
    }
  }
  return differences;
}

journey("every part looks as specified", { reducedMotion: "no-preference" }, async (launcher) => {
  const { page } = launcher;
  await launcher.send(status("x"), optionsMessage(), newsMessage(), verdict);
  await launcher.open("Parametres");
  await page.evaluate(() => Promise.allSettled(document.getAnimations().map((animation) => animation.finished)));
  const rules = [...looks.matchAll(/([^{}]+?) \{([^}]*)\}/g)].map(([, selectors, declarations]) => [selectors.trim(), declarations]);
  const isHovered = ([selectors]) => selectors.includes(":hover");
  assert.deepEqual(await page.evaluate(compareLooks, rules.filter((rule) => !isHovered(rule))), []);
  await page.emulateMedia({ reducedMotion: "reduce" });
  const session = await launcher.context.newCDPSession(page);
  for (const domain of ["DOM", "CSS"]) await session.send(domain + ".enable");
  const { root } = await session.send("DOM.getDocument");
  for (const [selectors] of rules.filter(isHovered)) {
    const { nodeId } = await session.send("DOM.querySelector", { nodeId: root.nodeId, selector: selectors.split(":")[0] });
    await session.send("CSS.forcePseudoState", { nodeId, forcedPseudoClasses: ["hover"] });
  }
  assert.deepEqual(await page.evaluate(compareLooks, rules.filter(isHovered)), []);
});

// The words of a page in their order.
const texts = {
  Accueil: `MISE A JOUR DU CLIENT | Initialisation... | 0% | - | - | VERSION ACTUELLE | - | DERNIERE VERSION | - | Verification SHA-256 active |
    Chaque fichier telecharge est verifie avant d'etre installe. | JOURNAL | TolmiraMMO Patcher | JOUER`,
  Nouveautes: "Nouveautes | Chargement... | OUVRIR LE SITE",
  Parametres: `Ces reglages sont ceux du jeu (fichier ostu.ini) : ils s'appliquent au prochain lancement et restent modifiables en jeu dans
    Options > Video. |
    AFFICHAGE | Resolution | Taille de l'image du jeu. La liste suit ce que l'ecran sait afficher. | 800 x 600 | 1280 x 800 | 1920 x 1080 | Plein
    ecran | Images par seconde | Sans limite, la carte graphique tourne a 100% meme dans un menu. | Illimite | 30 | 60 | 75 | 100 | 120 | 144 |
    165 | 240 | 90 (personnalise) | Synchronisation verticale | Supprime le dechirement de l'image, au prix d'un peu de latence. |
    QUALITE GRAPHIQUE | Qualite des textures | En basse, les particules (pluie, neige, poussiere) sont desactivees. | Elevee | Moyenne | Basse |
    Detail des objets | Finesse des modeles affiches autour du personnage. | Eleve | Moyen | Bas | Distance d'affichage | Distance a laquelle le
    decor et les personnages apparaissent. | Longue | Moyenne | Courte | Ombres | En basses, seule l'ombre simple sous les personnages est
    dessinee. | Elevees | Moyennes | Basses |
    EFFETS | Effets meteo | Pluie, neige et brouillard. | Cycle jour / nuit | Sans lui, il fait une fin d'apres-midi permanente. | Effets des
    sorts | Effets des equipements | Auras et brillances portees par les objets. | Degats affiches | Chiffres de degats au-dessus des cibles. |
    NOMS AFFICHES | Mon personnage | Autres joueurs | Monstres |
    CAMERA ET FENETRES | Camera verrouillee | Zoom sans limite | Autorise un recul de camera superieur au maximum habituel. | Opacite des fenetres
    | 200 |
    IMAGE | Exposition | Luminosite generale de la scene avant les couleurs. | 1.20 | Anticrenelage | Adoucit les bords en escalier. Cout tres
    faible. | SURFACES | Filtrage anisotrope | 4 | OMBRES | Decalage des ombres | Contre les rayures sur les surfaces eclairees. | 0.0031 |
    VALEURS PAR DEFAUT | ENREGISTRER`,
  Reparation: `Verification et reparation des fichiers | Compare chaque fichier installe a l'empreinte publiee par le serveur. La verification ne
    modifie rien : elle lit le client et dit ce qui ne va pas, comptez quelques minutes. Si elle trouve quelque chose, un bouton apparait pour
    remettre en place les fichiers concernes - et seulement ceux-la. Tes reglages, tes captures et tes comptes enregistres ne sont jamais touches. |
    Pret. | 0% | CORRECTS | - | MANQUANTS | - | ABIMES | - | VERIFIER LES FICHIERS`,
  Assistance: "Bientot disponible | Cette section arrive dans une prochaine mise a jour du patcher.",
};
const defaults = { fullscreen: 1, fpsLimit: 0, vsync: 0, texture: 1, detail: 1, distant: 1, shadow: 2, weather: 1, night: 1, spellSfx: 1, itemSfx: 1,
  damage: 0, nameSelf: 1, nameOthers: 1, nameMonsters: 1, cameraLock: 1, freeZoom: 0, windowAlpha: 255, exposure: 0.96, fxaa: 1, aniso: 14, shadowbias: 0.002 };

journey("every page has its words, and every setting its default", {}, async (launcher) => {
  const { page } = launcher;
  const state = async () => [await launcher.text("opt-state"), await page.getAttribute("#opt-state", "class")];
  await launcher.open("Parametres");
  await launcher.send(optionsMessage());
  for (const [tab, words] of Object.entries(texts)) {
    await launcher.open(tab);
    const shown = await page.locator("#main > div:visible").innerText();
    assert.equal(shown.split("\n").filter(Boolean).join(" | "), words.replace(/\s+/g, " "));
  }
  assert.deepEqual(await page.locator(".btn").evaluateAll((all) => all.map((button) => button.title)), ["Reduire", "Agrandir", "Fermer"]);
  assert.deepEqual(await page.locator(".opt-range").evaluateAll((all) => all.map(({ min, max, step }) => [min, max, step].join(" "))),
    ["0 255 1", "0.2 3 0.01", "1 16 1", "0 0.02 0.0001"]);
  /* global MOIS, TAGS_CONNUS */
  assert.deepEqual(await page.evaluate(() => [MOIS.join(" "), TAGS_CONNUS.join(" ")]), ["janvier fevrier mars avril mai juin juillet aout " +
    "septembre octobre novembre decembre", "contenu correctif evenement maintenance annonce"]);
  await launcher.open("Parametres");
  const row = await page.locator(".opt-row").first().elementHandle();
  await launcher.send({ ...optionsMessage(), iniExists: false });
  assert.ok(await row.evaluate((node) => node.isConnected), "the form is built once");
  assert.deepEqual(await state(), ["Le jeu n'a pas encore ete lance : voici les valeurs par defaut.", ""]);
  await page.click("#opt-reset");
  assert.deepEqual(await state(), ["Modifications non enregistrees.", "dirty"]);
  await page.click("#opt-apply");
  assert.deepEqual(await state(), ["Enregistrement...", ""]);
  assert.deepEqual(launcher.requests, [{ action: "getOptions" }, { action: "getNews" },
    { action: "saveOptions", values: { ...optionsMessage().values, ...defaults } }]);
  await launcher.send({ type: "optionsSaved", ok: false });
  assert.deepEqual(await state(), ["Echec de l'enregistrement : ostu.ini n'a pas pu etre ecrit.", "dirty"]);
  await launcher.send({ type: "optionsSaved", ok: true }, optionsMessage());
  assert.deepEqual(await state(), ["Reglages enregistres.", "saved"]);
});

test("the page knows a refusal by the host's own words", () => {
  const words = ["Patcher/control/dispatch.cpp", "Patcher/page/launcher.html"].map((file) =>
    /(?:kRefusal\[\]|REFUSAL) = "(.+)";/.exec(readFileSync(path.join(root, file), "utf8"))[1]);
  assert.equal(words[0], words[1]);
});
