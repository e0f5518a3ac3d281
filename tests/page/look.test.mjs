// The page's words and its settings.
import assert from "node:assert/strict";
import { journey } from "./support/launcher_page.mjs";
import { optionsMessage } from "./support/sample_messages.mjs";

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
  await launcher.select("Parametres");
  await launcher.send(optionsMessage());
  for (const [tab, words] of Object.entries(texts)) {
    await launcher.select(tab);
    const shown = await page.locator("#main > div:visible").innerText();
    assert.equal(shown.split("\n").filter(Boolean).join(" | "), words.replace(/\s+/g, " "));
  }
  assert.deepEqual(await page.locator(".btn").evaluateAll((all) => all.map((button) => button.title)), ["Reduire", "Agrandir", "Fermer"]);
  assert.deepEqual(await page.locator(".opt-range").evaluateAll((all) => all.map(({ min, max, step }) => [min, max, step].join(" "))),
    ["0 255 1", "0.2 3 0.01", "1 16 1", "0 0.02 0.0001"]);
  /* global MOIS, TAGS_CONNUS */
  assert.deepEqual(await page.evaluate(() => [MOIS.join(" "), TAGS_CONNUS.join(" ")]), ["janvier fevrier mars avril mai juin juillet aout " +
    "septembre octobre novembre decembre", "contenu correctif evenement maintenance annonce"]);
  await launcher.select("Parametres");
  const row = await page.locator(".opt-row").first().elementHandle();
  await launcher.send({ ...optionsMessage(), iniExists: false });
  assert.ok(await row.evaluate((node) => node.isConnected), "the form is built once");
  assert.deepEqual(await state(), ["Le jeu n'a pas encore ete lance : voici les valeurs par defaut.", ""]);
  await page.click("#opt-reset");
  assert.deepEqual(await state(), ["Modifications non enregistrees.", "dirty"]);
  await page.click("#opt-apply");
  assert.deepEqual(await state(), ["Enregistrement...", ""]);
  assert.deepEqual(await launcher.requests(), [{ action: "getOptions" }, { action: "getNews" },
    { action: "saveOptions", values: { ...optionsMessage().values, ...defaults } }]);
  await launcher.send({ type: "optionsSaved", ok: false });
  assert.deepEqual(await state(), ["Echec de l'enregistrement : ostu.ini n'a pas pu etre ecrit.", "dirty"]);
  await launcher.send({ type: "optionsSaved", ok: true }, optionsMessage());
  assert.deepEqual(await state(), ["Reglages enregistres.", "saved"]);
  assert.match(await launcher.text("log-list"), /\dReglages graphiques enregistres \(ostu\.ini\)\.$/);
});

journey("the keyboard works the settings, and only what was changed differs", { reducedMotion: "no-preference" }, async (launcher) => {
  const { page } = launcher;
  const focused = () => page.evaluate(() => document.activeElement.textContent);
  for (const [tab, key] of [["Nouveautes", "Tab"], ["Assistance", "Tab"], ["Parametres", "Shift+Tab"]]) {
    for (let i = 0; i < 40 && await focused() !== tab; i += 1) await page.keyboard.press(key);
    assert.equal(await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle), "solid", tab + " shows its focus");
    await page.keyboard.press("Enter");
    assert.equal(await page.locator(".nav-item.active, [aria-current=page]").textContent(), tab);
  }
  await launcher.send(optionsMessage());
  const row = (label) => page.locator(".opt-row", { has: page.getByText(label, { exact: true }) });
  await row("Decalage des ombres").locator("input").press("ArrowRight");
  await row("Anticrenelage").getByRole("switch", { checked: true }).press("Space");
  await row("Ombres").getByRole("radio", { name: "Elevees" }).click();
  for (const key of ["ArrowLeft", "ArrowRight", "ArrowDown"]) await page.keyboard.press(key);
  await row("Images par seconde").getByRole("combobox").selectOption("144");
  assert.equal(await launcher.text("opt-state"), "Modifications non enregistrees.");
  await row("Resolution").getByRole("combobox").selectOption("800 x 600");
  await page.click("#opt-apply");
  assert.deepEqual((await launcher.requests()).at(-1).values, { ...optionsMessage().values, shadowbias: 0.0032, fxaa: 0, shadow: 1, fpsLimit: 144,
    resWidth: 800, resHeight: 600 });
});
